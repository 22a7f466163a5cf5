#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>

#include "ZelshPath.h"
#include "ZelshWords.h"

constinit const char* zelshPrompt = "zelsh:/> ";

namespace Zelsh
{
namespace
{
/// Runs what may throw; the callers of the flat interface know statuses only.
template <typename Call>
ORV_ReturnStatus Guarded(Call call) noexcept
{
    try {
        return call();
    } catch (const std::bad_alloc&) {
        return ORV_NO_MEMORY;
    } catch (...) {
        return ORV_FAILURE;
    }
}

/// One block: the pointers, then the texts.
char** PackNames(const std::vector<std::string>& names)
{
    std::size_t size = (names.size() + 1) * sizeof(char*);  // one more: a block is never empty
    for (const std::string& name : names) {
        size += name.size() + 1;
    }
    char** const block = static_cast<char**>(std::malloc(size));
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    char* text = reinterpret_cast<char*>(block + names.size() + 1);
    for (std::size_t i = 0; i < names.size(); ++i) {
        std::memcpy(text, names[i].c_str(), names[i].size() + 1);
        block[i] = text;
        text += names[i].size() + 1;
    }
    return block;
}

ORV_ReturnStatus InstanceNodes(const ZELSHPath& path, char**& names, std::size_t& count)
{
    if (!HasInstances(path)) {
        return ORV_BAD_PARAM;
    }
    std::vector<std::string> instances;
    const ORV_ReturnStatus status = ListChildren(path, false, instances);
    if (status != ORV_OK) {
        return status;
    }
    std::transform(instances.begin(), instances.end(), instances.begin(), QuoteComponent);
    names = PackNames(instances);
    count = instances.size();
    return ORV_OK;
}

ORV_ReturnStatus ChangeRoot(const char* text)
{
    static std::string name;
    const std::string_view whole = text;
    if (!whole.empty() && whole[0] != '/') {
        return ORV_BAD_PARAM;
    }
    std::optional<ZELSHPath> path =
        Resolve(whole.substr(std::min(whole.find_first_not_of('/'), whole.size())), {{}, 0});
    ORV_ReturnStatus status = path ? CheckInstances(*path) : ORV_NOT_FOUND;
    if (status == ORV_OK && IsLeaf(*path)) {
        status = ORV_BAD_PARAM;
    }
    if (status != ORV_OK) {
        return status;
    }
    name = path->steps.empty() ? "" : TextOf(*path);
    path->rootDepth = path->steps.size();
    zelshRootNodeID = DefinitionOf(*path).node;
    zelshRootNodeStr = name.c_str();
    Root() = *path;
    WorkingDirectory() = *path;
    ZELSH_SetPrompt();
    return ORV_OK;
}

ORV_ReturnStatus New(ZELSHPath** path, std::optional<ZELSHPath> from)
{
    if (!from) {
        return ORV_NOT_FOUND;
    }
    *path = new ZELSHPath(std::move(*from));
    return ORV_OK;
}

ORV_ReturnStatus Append(ZELSHPath& path, const char* component)
{
    if (*component == '\0' || SplitPath(component).size() != 1) {
        return ORV_BAD_PARAM;
    }
    std::optional<ZELSHPath> longer = Resolve(component, path);
    if (!longer) {
        return ORV_NOT_FOUND;
    }
    path = std::move(*longer);
    return ORV_OK;
}

ORV_ReturnStatus CopyText(const ZELSHPath& path, char* text, std::size_t size)
{
    const std::string whole = TextOf(path);
    if (whole.size() >= size) {
        return ORV_LIMIT_EXCEEDED;
    }
    std::memcpy(text, whole.c_str(), whole.size() + 1);
    return ORV_OK;
}
}  // namespace
}  // namespace Zelsh

using namespace Zelsh;

ORV_ReturnStatus ZELSH_Init()
{
    const ORV_ReturnStatus status = ZELSH_InitRoot("");
    if (status != ORV_OK) {
        return status;
    }
    if (ZEL_CheckSig(ZEL_DefsMD5Sum, ZEL_INTERFACE_VERSION) != ORV_OK) {
        ZELSHError("The running kernel's definitions are not those that this shell was built with.");
        return ORV_FAILURE;
    }
    return ORV_OK;
}

ORV_ReturnStatus ZELSH_InitRoot(const char* text)
{
    return text != nullptr ? Guarded([=] { return ChangeRoot(text); }) : ORV_BAD_PARAM;
}

void ZELSH_SetPrompt()
{
    static std::string prompt;
    (void)Guarded([] {
        prompt = "zelsh:" + TextOf(WorkingDirectory()) + "> ";
        return ORV_OK;
    });
    zelshPrompt = prompt.c_str();
}

ORV_ReturnStatus ZELSH_GetInstanceNodes(const ZELSHPath* path, char*** names, std::size_t* count)
{
    if (path == nullptr || names == nullptr || count == nullptr) {
        return ORV_BAD_PARAM;
    }
    *names = nullptr;
    *count = 0;
    return Guarded([=] { return InstanceNodes(*path, *names, *count); });
}

int ZELSH_StringCompareCb(const void* left, const void* right)
{
    return std::strcmp(*static_cast<const char* const*>(left), *static_cast<const char* const*>(right));
}

ORV_ReturnStatus ZELSHPath_InitRoot(ZELSHPath** path)
{
    if (path == nullptr) {
        return ORV_BAD_PARAM;
    }
    *path = nullptr;
    return Guarded([=] { return New(path, Root()); });
}

ORV_ReturnStatus ZELSHPath_Form(const char* text, ZELSHPath** path)
{
    if (path == nullptr) {
        return ORV_BAD_PARAM;
    }
    *path = nullptr;
    if (text == nullptr || *text == '\0') {
        return ORV_BAD_PARAM;
    }
    return Guarded([=] { return New(path, Resolve(text, *text == '/' ? Root() : WorkingDirectory())); });
}

ORV_ReturnStatus ZELSHPath_CatComponent(ZELSHPath* path, const char* component)
{
    if (path == nullptr || component == nullptr) {
        return ORV_BAD_PARAM;
    }
    return Guarded([=] { return Append(*path, component); });
}

ORV_ReturnStatus ZELSHPath_GetStr(const ZELSHPath* path, char* text, std::size_t size)
{
    if (path == nullptr || text == nullptr) {
        return ORV_BAD_PARAM;
    }
    return Guarded([=] { return CopyText(*path, text, size); });
}

ORV_ReturnStatus ZELSHPath_GetLeafElement(const ZELSHPath* path, ZEL_NodeID* node)
{
    if (path == nullptr || node == nullptr) {
        return ORV_BAD_PARAM;
    }
    if (!IsLeaf(*path)) {
        return ORV_NOT_FOUND;
    }
    *node = DefinitionOf(*path).node;
    return ORV_OK;
}

ORV_ReturnStatus ZELSHPath_GetInstArgs(const ZELSHPath* path, ZEL_ParamList** arguments)
{
    if (path == nullptr || arguments == nullptr) {
        return ORV_BAD_PARAM;
    }
    *arguments = nullptr;
    return Guarded([=] {
        *arguments = InstanceArguments(*path).release();
        return ORV_OK;
    });
}

void ZELSHPath_Delete(ZELSHPath* path)
{
    delete path;
}
