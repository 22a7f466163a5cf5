#include <optional>
#include <string>
#include <vector>

#include "ZelshCommands.h"
#include "ZelshOutput.h"
#include "ZelshPath.h"
#include "ZelshPrint.h"

namespace Zelsh
{
namespace
{
ORV_ReturnStatus GetLeaf(const ZELSHPath& path)
{
    std::string data;
    const ZEL_NodeDefinition& leaf = DefinitionOf(path);
    const ORV_ReturnStatus status = ZEL_GetData(leaf.node, InstanceArguments(path).get(), data);
    if (status == ORV_OK) {
        options.output->PrintValue(TextOf(path), {leaf.outputType, data, leaf.unit});
    }
    return status;
}

ORV_ReturnStatus GetBranch(const ZELSHPath& path);

/// What cannot be read on this host, or has gone since it was listed, is no failure of the whole.
ORV_ReturnStatus GetBelow(const ZELSHPath& path)
{
    const ORV_ReturnStatus status = IsLeaf(path) ? GetLeaf(path) : GetBranch(path);
    if (status == ORV_OK || status == ORV_NOT_FOUND || status == ORV_NOT_SUPPORTED) {
        return ORV_OK;
    }
    if (IsLeaf(path)) {
        ZELSHError("get: %s: %s", TextOf(path).c_str(), ORV_ReturnStatusToString(status));
    }
    return status;
}

ORV_ReturnStatus GetBranch(const ZELSHPath& path)
{
    std::vector<std::string> names;
    ORV_ReturnStatus result = ListChildren(path, false, names);
    for (std::size_t i = 0; i < names.size() && !OutputIsGone(); ++i) {
        ZELSHPath child = path;
        const ORV_ReturnStatus status = Enter(child, names[i]) ? GetBelow(child) : ORV_OK;
        result = status != ORV_OK ? status : result;
    }
    return result;
}

ORV_ReturnStatus GetPath(const ZELSHPath& path)
{
    if (IsLeaf(path)) {
        return GetLeaf(path);
    }
    const ORV_ReturnStatus status = CheckInstances(path);
    return status == ORV_OK ? GetBranch(path) : status;
}
}  // namespace

ORV_ReturnStatus Get(const Call& call)
{
    std::vector<ZELSHPath> paths;
    for (int i = 1; i < call.count; ++i) {
        std::optional<ZELSHPath> path = ResolveArgument(call.arguments[0], call.arguments[i]);
        if (!path) {
            return ORV_NOT_FOUND;
        }
        paths.push_back(std::move(*path));
    }
    if (paths.empty()) {
        paths.push_back(WorkingDirectory());
    }
    const ZEL_Snapshot moment;
    ORV_ReturnStatus result = ORV_OK;
    options.output->BeginValues();
    for (const ZELSHPath& path : paths) {
        const ORV_ReturnStatus status = GetPath(path);
        result = status != ORV_OK ? status : result;
    }
    options.output->EndValues();
    return result;
}
}  // namespace Zelsh
