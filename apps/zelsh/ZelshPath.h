#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "ZELSH.h"

namespace Zelsh
{
/// One component of a path, entered.
struct Step
{
    ZEL_NodeID node;  ///< of an instance: its instance branch
    bool isInstance;
    std::string name;
};
}  // namespace Zelsh

struct ZELSHPath
{
    std::vector<Zelsh::Step> steps;  ///< from the root of the whole tree
    std::size_t rootDepth;           ///< how many of them lead to the shell's root
};

namespace Zelsh
{
/// Changed by ZELSH_InitRoot.
ZELSHPath& Root();

/// Changed by "cd".
ZELSHPath& WorkingDirectory();

/// Resolves a text path from @p from or, when it begins with a slash, from the root. At type level "<interface>" stands
/// for any instance of the branch whose instances are called so. Nothing when no node has that path.
std::optional<ZELSHPath> Resolve(std::string_view text, const ZELSHPath& from, bool typeLevel = false);

/// What a command's argument leads to from the working directory; nothing, after a message, when that is no node.
std::optional<ZELSHPath> ResolveArgument(const char* command, const char* text, bool typeLevel = false);

/// Goes one plain component on. False when there is none of that name.
bool Enter(ZELSHPath& path, const std::string& name, bool typeLevel = false);

/// The path as text, quoted where needed.
std::string TextOf(const ZELSHPath& path);

/// The definition of the node that the path ends at; of an instance: of its instance branch.
const ZEL_NodeDefinition& DefinitionOf(const ZELSHPath& path);

bool IsLeaf(const ZELSHPath& path);

/// True at an instance branch, false at one of its instances.
bool HasInstances(const ZELSHPath& path);

using ParamList = std::unique_ptr<ZEL_ParamList, decltype(&ZEL_ParamListDestroy)>;

/// The path's instance arguments. @throws std::bad_alloc
ParamList InstanceArguments(const ZELSHPath& path);

/// ORV_OK when every instance on the path exists at this moment.
ORV_ReturnStatus CheckInstances(const ZELSHPath& path);

/// The names of what stands below a branch: instances as they are found, at type level what they are called. Sorted
/// where the options say so.
ORV_ReturnStatus ListChildren(const ZELSHPath& path, bool typeLevel, std::vector<std::string>& names);
}  // namespace Zelsh
