#include <algorithm>
#include <charconv>
#include <cstdint>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "ZELSH.h"

using InstanceArgument = std::variant<std::string, std::int64_t>;

struct ZELSHPath
{
    ZEL_NodeID leaf;
    std::vector<InstanceArgument> arguments;
};

namespace
{
std::vector<std::string_view> Components(std::string_view path)
{
    std::vector<std::string_view> components;
    while (!path.empty()) {
        const std::string_view component = path.substr(0, path.find('/'));
        if (!component.empty()) {
            components.push_back(component);
        }
        path.remove_prefix(std::min(component.size() + 1, path.size()));
    }
    return components;
}

/// Numbers are written without a sign and kept as the 64 bits that they are.
std::optional<std::int64_t> InstanceNumber(std::string_view text)
{
    std::uint64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool whole = error == std::errc() && end == text.data() + text.size();
    return whole ? std::optional(static_cast<std::int64_t>(number)) : std::nullopt;
}

/// Matches one component with the definition's; an instance is added to @p arguments.
bool Matches(std::string_view component, std::string_view defined, std::vector<InstanceArgument>& arguments)
{
    const ZEL_DataKind kind = ZEL_PlaceholderKind(defined);
    if (kind == ZEL_DATA_NONE) {
        return component == defined;
    }
    if (kind == ZEL_DATA_TEXT) {
        arguments.emplace_back(std::string(component));
        return true;
    }
    const std::optional<std::int64_t> number = InstanceNumber(component);
    arguments.emplace_back(number.value_or(0));
    return number.has_value();
}

std::optional<ZELSHPath> Match(const std::vector<std::string_view>& components, const ZEL_NodeDefinition& definition)
{
    const std::vector<std::string_view> defined = Components(definition.path);
    ZELSHPath path{definition.node, {}};
    bool matches = components.size() == defined.size();
    for (std::size_t i = 0; matches && i < defined.size(); ++i) {
        matches = Matches(components[i], defined[i], path.arguments);
    }
    return matches ? std::optional(std::move(path)) : std::nullopt;
}

ORV_ReturnStatus Resolve(std::string_view text, ZELSHPath*& path)
{
    const std::vector<std::string_view> components = Components(text);
    const ZEL_NodeDefinition* definition = nullptr;
    for (std::size_t i = 0; (definition = ZEL_NodeDefinitionAt(i)) != nullptr; ++i) {
        if (std::optional<ZELSHPath> match = Match(components, *definition)) {
            path = new ZELSHPath(std::move(*match));
            return ORV_OK;
        }
    }
    return ORV_NOT_FOUND;
}

ORV_ReturnStatus Add(ZEL_ParamList* list, const InstanceArgument& argument)
{
    if (const auto* text = std::get_if<std::string>(&argument)) {
        return ZEL_ParamListAddString(list, text->c_str());
    }
    return ZEL_ParamListAddInt(list, std::get<std::int64_t>(argument));
}
}  // namespace

ORV_ReturnStatus ZELSHPath_Form(const char* text, ZELSHPath** path)
{
    if (path == nullptr) {
        return ORV_BAD_PARAM;
    }
    *path = nullptr;
    if (text == nullptr || *text != '/') {
        return ORV_BAD_PARAM;
    }
    try {
        return Resolve(text, *path);
    } catch (...)  // nothing but memory can run out here
    {
        return ORV_NO_MEMORY;
    }
}

ORV_ReturnStatus ZELSHPath_GetLeafElement(const ZELSHPath* path, ZEL_NodeID* node)
{
    if (path == nullptr || node == nullptr) {
        return ORV_BAD_PARAM;
    }
    *node = path->leaf;
    return ORV_OK;
}

ORV_ReturnStatus ZELSHPath_GetInstArgs(const ZELSHPath* path, ZEL_ParamList** arguments)
{
    if (path == nullptr || arguments == nullptr) {
        return ORV_BAD_PARAM;
    }
    *arguments = nullptr;
    std::unique_ptr<ZEL_ParamList, decltype(&ZEL_ParamListDestroy)> list(
        ZEL_ParamListCreate(1, static_cast<int>(path->arguments.size())), &ZEL_ParamListDestroy);
    ORV_ReturnStatus status = list != nullptr ? ORV_OK : ORV_NO_MEMORY;
    for (std::size_t i = 0; status == ORV_OK && i < path->arguments.size(); ++i) {
        status = Add(list.get(), path->arguments[i]);
    }
    *arguments = status == ORV_OK ? list.release() : nullptr;
    return status;
}

void ZELSHPath_Delete(ZELSHPath* path)
{
    delete path;
}
