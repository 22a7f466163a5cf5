#include "SchemaFormats.h"

#include <arpa/inet.h>

#include <algorithm>
#include <charconv>
#include <string>

namespace JsonSchema
{
namespace
{
#define DATE_PATTERN "[0-9]{4}-(0[1-9]|1[0-2])-(0[1-9]|[12][0-9]|3[01])"  // macros: pieces of the texts below
#define TIME_PATTERN "([01][0-9]|2[0-3]):[0-5][0-9]:([0-5][0-9]|60)(\\.[0-9]+)?([Zz]|[+-]([01][0-9]|2[0-3]):[0-5][0-9])"

struct Format
{
    std::string_view name;
    const char* pattern;  ///< null: an address family
    int family;
};

constexpr Format FORMATS[] = {
    {"date", "^" DATE_PATTERN "$", 0},
    {"time", "^" TIME_PATTERN "$", 0},
    {"date-time", "^" DATE_PATTERN "[Tt]" TIME_PATTERN "$", 0},
    {"hostname", "^[A-Za-z0-9]([A-Za-z0-9-]*[A-Za-z0-9])?(\\.[A-Za-z0-9]([A-Za-z0-9-]*[A-Za-z0-9])?)*$", 0},
    {"uuid", "^[0-9A-Fa-f]{8}(-[0-9A-Fa-f]{4}){3}-[0-9A-Fa-f]{12}$", 0},
    {"ipv4", nullptr, AF_INET},
    {"ipv6", nullptr, AF_INET6},
};

const Format* Find(std::string_view name)
{
    const auto found = std::find_if(std::begin(FORMATS), std::end(FORMATS),
                                    [name](const Format& format) { return format.name == name; });
    return found == std::end(FORMATS) ? nullptr : found;
}

bool IsAddress(int family, std::string_view text)
{
    in6_addr address{};
    return text.find('\0') == std::string_view::npos && inet_pton(family, std::string(text).c_str(), &address) == 1;
}

int NumberAt(std::string_view text, std::size_t at, std::size_t length)
{
    int number = 0;
    std::from_chars(text.data() + at, text.data() + at + length, number);
    return number;
}

/// For a text that begins with a date of the right form.
bool IsDayOfMonth(std::string_view text)
{
    constexpr int DAYS[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    const int year = NumberAt(text, 0, 4);
    const int month = NumberAt(text, 5, 2);
    const bool leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
    return NumberAt(text, 8, 2) <= DAYS[month - 1] + (month == 2 && leap ? 1 : 0);
}

bool IsHostname(std::string_view text)
{
    std::size_t label = 0;
    for (const char c : text) {
        label = c == '.' ? 0 : label + 1;
        if (label > 63) {
            return false;
        }
    }
    return text.size() <= 253;
}
}  // namespace

bool IsKnownFormat(std::string_view format)
{
    return Find(format) != nullptr;
}

bool HasFormat(std::string_view name, std::string_view text, SchemaPatterns& patterns)
{
    const Format& format = *Find(name);
    if (format.pattern == nullptr) {
        return IsAddress(format.family, text);
    }
    if (!patterns.Matches(format.pattern, text)) {
        return false;
    }
    return name == "hostname" ? IsHostname(text) : name.substr(0, 4) != "date" || IsDayOfMonth(text);
}
}  // namespace JsonSchema
