#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include "ZelshCommands.h"
#include "ZelshOutput.h"
#include "ZelshPath.h"
#include "ZelshValue.h"
#include "ZelshWords.h"

namespace Zelsh
{
namespace
{
/// The call's one operand, which may be left out; false, after a message, when there is more.
bool TakeOperand(const Call& call, int first, const char*& operand)
{
    operand = call.count > first ? call.arguments[first] : nullptr;
    if (call.count <= first + 1) {
        return true;
    }
    ZELSHError("%s: expected one path, found %d", call.arguments[0], call.count - first);
    return false;
}

const char* KindOf(const ZELSHPath& path)
{
    return HasInstances(path)                                    ? "instances"
           : !path.steps.empty() && path.steps.back().isInstance ? "instance"
                                                                 : "branch";
}

std::string TypeOf(const ZELSHPath& path)
{
    if (!IsLeaf(path)) {
        return KindOf(path);
    }
    const ZEL_NodeDefinition& leaf = DefinitionOf(path);
    return TypeName(leaf.outputType != nullptr ? *leaf.outputType : *leaf.inputType);
}

std::string AccessOf(const ZEL_NodeDefinition& node)
{
    std::string access = node.outputType != nullptr ? "get" : "";
    if (node.inputType != nullptr) {
        access += access.empty() ? "set" : ",set";
    }
    return access;
}

Table::Row Describe(const std::string& name, const ZELSHPath& path, bool isLong)
{
    Table::Row row = {QuoteComponent(name), IsLeaf(path) ? "" : "/", {TypeOf(path)}};
    if (isLong) {
        row.cells.push_back(AccessOf(DefinitionOf(path)));
        row.cells.emplace_back(DefinitionOf(path).help);
    }
    return row;
}

ORV_ReturnStatus Describe(const ZELSHPath& path, bool typeLevel, bool isLong, Table& table)
{
    if (IsLeaf(path)) {
        table.rows.push_back(Describe(path.steps.back().name, path, isLong));
        return ORV_OK;
    }
    std::vector<std::string> names;
    const ORV_ReturnStatus status = ListChildren(path, typeLevel, names);
    for (const std::string& name : names) {
        ZELSHPath child = path;
        if (Enter(child, name, typeLevel)) {
            table.rows.push_back(Describe(name, child, isLong));
        }
    }
    return status;
}
}  // namespace

ORV_ReturnStatus ChangeDirectory(const Call& call)
{
    const char* operand = nullptr;
    if (!TakeOperand(call, 1, operand)) {
        return ORV_BAD_PARAM;
    }
    const std::optional<ZELSHPath> path = ResolveArgument("cd", operand != nullptr ? operand : "/");
    if (!path) {
        return ORV_NOT_FOUND;
    }
    if (IsLeaf(*path)) {
        ZELSHError("cd: %s: expected a branch, found a leaf", operand);
        return ORV_BAD_PARAM;
    }
    const ORV_ReturnStatus status = CheckInstances(*path);
    if (status == ORV_OK) {
        WorkingDirectory() = *path;
        ZELSH_SetPrompt();
    }
    return status;
}

ORV_ReturnStatus PrintDirectory(const Call&)
{
    options.output->PrintText("pwd", TextOf(WorkingDirectory()));
    return ORV_OK;
}

ORV_ReturnStatus ListNodes(const Call& call)
{
    const bool isLong = call.count > 1 && std::strcmp(call.arguments[1], "-l") == 0;
    const char* operand = nullptr;
    if (!TakeOperand(call, isLong ? 2 : 1, operand)) {
        return ORV_BAD_PARAM;
    }
    const std::optional<ZELSHPath> path =
        ResolveArgument(call.arguments[0], operand != nullptr ? operand : ".", call.typeLevel);
    if (!path) {
        return ORV_NOT_FOUND;
    }
    const ORV_ReturnStatus status = call.typeLevel ? ORV_OK : CheckInstances(*path);
    if (status != ORV_OK) {
        return status;
    }
    Table table;
    table.columns = isLong ? std::vector<const char*>{"type", "access", "help"} : std::vector<const char*>{"type"};
    const ORV_ReturnStatus listed = Describe(*path, call.typeLevel, isLong, table);
    if (listed == ORV_OK) {
        options.output->PrintTable(table);
    }
    return listed;
}
}  // namespace Zelsh
