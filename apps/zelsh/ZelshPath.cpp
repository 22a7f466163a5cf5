#include "ZelshPath.h"

#include <algorithm>
#include <new>

#include "ZelshWords.h"

ZEL_NodeID zelshRootNodeID = ZEL_NODE_root;
constinit const char* zelshRootNodeStr = "";

namespace Zelsh
{
namespace
{
/// What type level calls the instances of a branch.
std::string Placeholder(const ZEL_NodeDefinition& branch)
{
    return std::string("<") + branch.instanceName + ">";
}

bool IsNumber(const ZEL_NodeDefinition& branch)
{
    return branch.instanceKind != ZEL_DATA_TEXT;
}

bool EnterInstance(ZELSHPath& path, const std::string& name, bool typeLevel)
{
    const ZEL_NodeDefinition& branch = DefinitionOf(path);
    unsigned long number = 0;
    if (!IsNumber(branch) || (typeLevel && name == Placeholder(branch))) {
        path.steps.push_back({branch.node, true, name});
        return true;
    }
    if (strtoul_limit_check(name.c_str(), 10, UINT64_MAX, &number) == 0) {
        return false;
    }
    path.steps.push_back({branch.node, true, std::to_string(number)});  // "007" is 7
    return true;
}

/// Takes one component of a text path.
bool Follow(ZELSHPath& path, const Component& component, bool typeLevel)
{
    if (component.quoted) {
        return Enter(path, component.name, typeLevel);
    }
    if (component.name == "..") {
        path.steps.resize(std::max(path.rootDepth, path.steps.size() - std::min<std::size_t>(path.steps.size(), 1)));
        return true;
    }
    return component.name.empty() || component.name == "." || Enter(path, component.name, typeLevel);
}

ORV_ReturnStatus AddArgument(ZEL_ParamList* list, const Step& step)
{
    if (!IsNumber(*ZEL_LookupNode(step.node))) {
        return ZEL_ParamListAddString(list, step.name.c_str());
    }
    unsigned long number = 0;
    const bool isNumber = strtoul_limit_check(step.name.c_str(), 10, UINT64_MAX, &number) == 1;
    return isNumber ? ZEL_ParamListAddInt(list, static_cast<std::int64_t>(number)) : ORV_BAD_PARAM;
}

ORV_ReturnStatus MakeArguments(const ZELSHPath& path, ParamList& list)
{
    const auto count = std::count_if(path.steps.begin(), path.steps.end(), [](const Step& s) { return s.isInstance; });
    list.reset(ZEL_ParamListCreate(1, static_cast<int>(count)));
    ORV_ReturnStatus status = list != nullptr ? ORV_OK : ORV_NO_MEMORY;
    for (const Step& step : path.steps) {
        if (step.isInstance && status == ORV_OK) {
            status = AddArgument(list.get(), step);
        }
    }
    return status;
}

std::vector<std::string> ChildNames(ZEL_NodeID branch)
{
    std::vector<std::string> names;
    for (std::size_t i = 0; const ZEL_NodeDefinition* child = ZEL_ChildAt(branch, i); ++i) {
        names.emplace_back(child->name);
    }
    if (options.sorted != 0) {
        std::sort(names.begin(), names.end());
    }
    return names;
}
}  // namespace

ZELSHPath& Root()
{
    static ZELSHPath root = {{}, 0};
    return root;
}

ZELSHPath& WorkingDirectory()
{
    static ZELSHPath directory = Root();
    return directory;
}

const ZEL_NodeDefinition& DefinitionOf(const ZELSHPath& path)
{
    return *ZEL_LookupNode(path.steps.empty() ? ZEL_NODE_root : path.steps.back().node);
}

bool IsLeaf(const ZELSHPath& path)
{
    return DefinitionOf(path).kind == ZEL_KIND_LEAF;
}

bool HasInstances(const ZELSHPath& path)
{
    return DefinitionOf(path).kind == ZEL_KIND_INSTANCE_BRANCH && !path.steps.back().isInstance;
}

bool Enter(ZELSHPath& path, const std::string& name, bool typeLevel)
{
    if (name.empty() || name.find('\0') != std::string::npos) {
        return false;
    }
    if (HasInstances(path)) {
        return EnterInstance(path, name, typeLevel);
    }
    const ZEL_NodeDefinition* child = ZEL_FindChild(DefinitionOf(path).node, name.c_str());
    if (child == nullptr) {
        return false;
    }
    path.steps.push_back({child->node, false, name});
    return true;
}

std::optional<ZELSHPath> Resolve(std::string_view text, const ZELSHPath& from, bool typeLevel)
{
    ZELSHPath path = text.starts_with('/') ? Root() : from;
    for (const Component& component : SplitPath(text)) {
        if (!Follow(path, component, typeLevel)) {
            return std::nullopt;
        }
    }
    return path;
}

std::optional<ZELSHPath> ResolveArgument(const char* command, const char* text, bool typeLevel)
{
    std::optional<ZELSHPath> path = Resolve(text, WorkingDirectory(), typeLevel);
    if (!path) {
        ZELSHError("%s: %s: no such node", command, text);
    }
    return path;
}

std::string TextOf(const ZELSHPath& path)
{
    std::string text;
    for (std::size_t i = path.rootDepth; i < path.steps.size(); ++i) {
        text += "/" + QuoteComponent(path.steps[i].name);
    }
    return text.empty() ? "/" : text;
}

ParamList InstanceArguments(const ZELSHPath& path)
{
    ParamList list(nullptr, &ZEL_ParamListDestroy);
    if (MakeArguments(path, list) == ORV_NO_MEMORY) {
        throw std::bad_alloc();
    }
    return list;
}

ORV_ReturnStatus CheckInstances(const ZELSHPath& path)
{
    ZELSHPath above = {{}, 0};
    for (const Step& step : path.steps) {
        std::vector<std::string> names;
        if (step.isInstance) {
            const ORV_ReturnStatus status = ListChildren(above, false, names);
            if (status != ORV_OK) {
                return status;
            }
            if (std::find(names.begin(), names.end(), step.name) == names.end()) {
                return ORV_NOT_FOUND;
            }
        }
        above.steps.push_back(step);
    }
    return ORV_OK;
}

ORV_ReturnStatus ListChildren(const ZELSHPath& path, bool typeLevel, std::vector<std::string>& names)
{
    const ZEL_NodeDefinition& branch = DefinitionOf(path);
    if (!HasInstances(path)) {
        names = ChildNames(branch.node);
        return ORV_OK;
    }
    if (typeLevel) {
        names = {Placeholder(branch)};
        return ORV_OK;
    }
    return ZEL_ListInstances(branch.node, InstanceArguments(path).get(), names);
}
}  // namespace Zelsh
