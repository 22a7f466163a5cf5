#include "ZelshInput.h"

#include <arpa/inet.h>
#include <algorithm>
#include <cctype>
#include <charconv>
#include <limits>
#include <string_view>

#include "ZelshValue.h"

namespace Zelsh
{
namespace
{
struct Range
{
    std::int64_t least;
    std::uint64_t greatest;
};

template <typename Number>
Range RangeOf()
{
    return {static_cast<std::int64_t>(std::numeric_limits<Number>::min()),
            static_cast<std::uint64_t>(std::numeric_limits<Number>::max())};
}

/// Nothing for a type that is no integer.
std::optional<Range> IntegerRange(ZEL_DataKind kind)
{
    switch (kind) {
        case ZEL_DATA_INT8:
            return RangeOf<std::int8_t>();
        case ZEL_DATA_INT16:
            return RangeOf<std::int16_t>();
        case ZEL_DATA_INT32:
            return RangeOf<std::int32_t>();
        case ZEL_DATA_INT64:
            return RangeOf<std::int64_t>();
        case ZEL_DATA_UINT8:
            return RangeOf<std::uint8_t>();
        case ZEL_DATA_UINT16:
            return RangeOf<std::uint16_t>();
        case ZEL_DATA_UINT32:
            return RangeOf<std::uint32_t>();
        case ZEL_DATA_UINT64:
            return RangeOf<std::uint64_t>();
        default:
            return std::nullopt;
    }
}

std::optional<std::int64_t> ParseInteger(const std::string& text, const Range& range)
{
    if (!text.empty() && text[0] == '-') {
        std::int64_t number = 0;
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
        const bool isWhole = error == std::errc() && end == text.data() + text.size();
        return isWhole && number >= range.least ? std::optional(number) : std::nullopt;
    }
    unsigned long number = 0;
    const bool isNumber = strtoul_limit_check(text.c_str(), 10, range.greatest, &number) == 1;
    return isNumber ? std::optional(static_cast<std::int64_t>(number)) : std::nullopt;
}

std::optional<std::int64_t> ParseBoolean(const std::string& text)
{
    if (text == "true" || text == "1") {
        return 1;
    }
    return text == "false" || text == "0" ? std::optional<std::int64_t>(0) : std::nullopt;
}

std::optional<std::int64_t> ParseEnumeration(const ZEL_Type& type, const std::string& text)
{
    for (std::size_t i = 0; i < type.enumeratorCount; ++i) {
        if (text == type.enumerators[i].name) {
            return type.enumerators[i].value;
        }
    }
    return std::nullopt;
}

/// True for @p text of the form @p form, where an "x" stands for a hexadecimal digit.
bool HasForm(const std::string& text, std::string_view form)
{
    const auto fits = [](char given, char expected) {
        const bool isDigit = std::isxdigit(static_cast<unsigned char>(given)) != 0;
        return expected == 'x' ? isDigit : given == expected;
    };
    return std::equal(text.begin(), text.end(), form.begin(), form.end(), fits);
}

bool IsHexadecimal(const std::string& text, std::size_t bytes)
{
    const auto isDigit = [](char c) { return std::isxdigit(static_cast<unsigned char>(c)) != 0; };
    const bool fits = bytes == 0 ? text.size() % 2 == 0 : text.size() == 2 * bytes;
    return fits && std::all_of(text.begin(), text.end(), isDigit);
}

bool IsAddress(int family, const std::string& text)
{
    unsigned char address[sizeof(in6_addr)];
    return inet_pton(family, text.c_str(), address) == 1;
}

bool IsTextOf(const ZEL_Type& type, const std::string& text)
{
    switch (type.kind) {
        case ZEL_DATA_TEXT:
            return true;
        case ZEL_DATA_BYTES:
            return IsHexadecimal(text, type.size);
        case ZEL_DATA_MAC:
            return HasForm(text, "xx:xx:xx:xx:xx:xx");
        case ZEL_DATA_UUID:
            return HasForm(text, "xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx");
        case ZEL_DATA_IPV4:
            return IsAddress(AF_INET, text);
        case ZEL_DATA_IPV6:
            return IsAddress(AF_INET6, text);
        default:
            return false;
    }
}

std::optional<Parameter> AsParameter(const std::optional<std::int64_t>& number)
{
    return number ? std::optional<Parameter>(*number) : std::nullopt;
}

std::string EnumeratorNames(const ZEL_Type& type)
{
    std::string names;
    for (std::size_t i = 0; i < type.enumeratorCount; ++i) {
        names += (i == 0 ? "" : i + 1 == type.enumeratorCount ? " or " : ", ") + std::string(type.enumerators[i].name);
    }
    return names;
}

}  // namespace

std::optional<Parameter> ParseParameter(const ZEL_Type& type, const std::string& text)
{
    if (text.find('\0') != std::string::npos) {
        return std::nullopt;
    }
    if (const std::optional<Range> range = IntegerRange(type.kind)) {
        return AsParameter(ParseInteger(text, *range));
    }
    if (type.kind == ZEL_DATA_BOOL) {
        return AsParameter(ParseBoolean(text));
    }
    if (type.kind == ZEL_DATA_ENUM) {
        return AsParameter(ParseEnumeration(type, text));
    }
    return IsTextOf(type, text) ? std::optional<Parameter>(text) : std::nullopt;
}

std::string ExpectationOf(const ZEL_Type& type)
{
    if (const std::optional<Range> range = IntegerRange(type.kind)) {
        return "an integer from " + std::to_string(range->least) + " to " + std::to_string(range->greatest);
    }
    switch (type.kind) {
        case ZEL_DATA_BOOL:
            return "true or false";
        case ZEL_DATA_ENUM:
            return EnumeratorNames(type);
        case ZEL_DATA_TEXT:
            return "a text without NUL bytes";
        case ZEL_DATA_BYTES:
            return type.size == 0 ? "pairs of hexadecimal digits"
                                  : std::to_string(2 * type.size) + " hexadecimal digits";
        case ZEL_DATA_MAC:
            return "a MAC address like 00:1b:21:3c:9d:f8";
        case ZEL_DATA_UUID:
            return "a UUID like 5f0d6f4e-7a64-4c0e-9d6e-0c3a5b1f2a11";
        case ZEL_DATA_IPV4:
            return "an IPv4 address like 192.0.2.1";
        case ZEL_DATA_IPV6:
            return "an IPv6 address like 2001:db8::1";
        default:
            return "nothing that the shell can write (" + TypeName(type) + ")";
    }
}
}  // namespace Zelsh
