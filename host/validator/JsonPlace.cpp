#include "JsonPlace.h"

#include <vector>

#include "ConfigStoreDocument.h"

namespace JsonSchema
{
namespace
{
constexpr std::size_t SHOWN_BYTES = 80;

/// At most SHOWN_BYTES of UTF-8, never ending inside a character.
std::string_view Cut(std::string_view text)
{
    if (text.size() <= SHOWN_BYTES) {
        return text;
    }
    std::size_t end = SHOWN_BYTES;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) {
        --end;
    }
    return text.substr(0, end);
}

std::string Serialized(const NimbConfigStore::JsonValue& value)
{
    std::string text;
    ConfigStoreDocument::SerializeValue(value, text);
    return text;
}
}  // namespace

std::string Counted(std::uint64_t count, const char* thing)
{
    return std::to_string(count) + " " + thing + (count == 1 ? "" : "s");
}

NimbConfigStore::JsonValue TextValue(const std::string& text, NimbConfigStore::JsonAllocator& allocator)
{
    return {text.data(), static_cast<rapidjson::SizeType>(text.size()), allocator};
}

std::string EscapedToken(std::string_view token)
{
    std::string escaped;
    for (const char c : token) {
        escaped += c == '~' ? "~0" : c == '/' ? "~1" : std::string(1, c);
    }
    return escaped;
}

std::string PointerTo(const Place* place)
{
    std::vector<const Place*> steps;
    for (; place != nullptr; place = place->parent) {
        steps.push_back(place);
    }
    std::string pointer;
    for (auto step = steps.rbegin(); step != steps.rend(); ++step) {
        pointer += "/" + ((*step)->isElement ? std::to_string((*step)->index) : EscapedToken((*step)->member));
    }
    return pointer;
}

std::string Quoted(std::string_view text)
{
    const std::string_view shown = Cut(text);
    const auto length = static_cast<rapidjson::SizeType>(shown.size());
    return Serialized(NimbConfigStore::JsonValue(rapidjson::StringRef(shown.data(), length))) +
           (shown.size() < text.size() ? "..." : "");
}

std::string Described(const NimbConfigStore::JsonValue& value)
{
    if (value.IsArray()) {
        return "an array of " + Counted(value.Size(), "element");
    }
    if (value.IsObject()) {
        return "an object of " + Counted(value.MemberCount(), "member");
    }
    return value.IsString() ? Quoted({value.GetString(), value.GetStringLength()}) : Serialized(value);
}
}  // namespace JsonSchema
