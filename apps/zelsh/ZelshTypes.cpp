#include <optional>
#include <string>

#include "ZelshCommands.h"
#include "ZelshOutput.h"
#include "ZelshPath.h"
#include "ZelshValue.h"

namespace Zelsh
{
namespace
{
std::string EnumeratorList(const ZEL_Type& type)
{
    std::string list;
    for (std::size_t i = 0; i < type.enumeratorCount; ++i) {
        list += (list.empty() ? "" : "|") + std::string(type.enumerators[i].name);
    }
    return list;
}

/// An enumeration says its values, where it is not an element of something.
std::string TypeText(const ZEL_Type& type)
{
    return type.kind == ZEL_DATA_ENUM ? EnumeratorList(type) : TypeName(type);
}

void AddRows(const std::string& name, const ZEL_Type& type, const char* unit, const char* access, const char* help,
             Table& table)
{
    table.rows.push_back({name, "", {TypeText(type), unit, access, help}});
    const ZEL_Type& inner = IsArray(type) ? *type.element : type;
    for (std::size_t i = 0; i < inner.memberCount; ++i) {
        const ZEL_TypeMember& member = inner.members[i];
        AddRows(name + (IsArray(type) ? "[]." : ".") + member.name, *member.type, member.unit, access, member.help,
                table);
    }
}
}  // namespace

ORV_ReturnStatus DescribeType(const Call& call)
{
    if (call.count != 2) {
        ZELSHError("typeget: expected the path of one leaf");
        return ORV_BAD_PARAM;
    }
    const std::optional<ZELSHPath> path = ResolveArgument("typeget", call.arguments[1], call.typeLevel);
    if (!path) {
        return ORV_NOT_FOUND;
    }
    if (!IsLeaf(*path)) {
        ZELSHError("typeget: %s: expected a leaf, found a branch", call.arguments[1]);
        return ORV_BAD_PARAM;
    }
    const ZEL_NodeDefinition& leaf = DefinitionOf(*path);
    Table table = {{"type", "unit", "access", "help"}, {}};
    if (leaf.outputType != nullptr) {
        AddRows(leaf.name, *leaf.outputType, leaf.unit, leaf.inputType == leaf.outputType ? "get,set" : "get",
                leaf.help, table);
    }
    if (leaf.inputType != nullptr && leaf.inputType != leaf.outputType) {
        AddRows(leaf.name, *leaf.inputType, leaf.unit, "set", leaf.help, table);
    }
    options.output->PrintTable(table);
    return ORV_OK;
}
}  // namespace Zelsh
