#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

// UTF-8 as what the programs show has it. Any bytes may come.
namespace Utf8
{
struct CodePoint
{
    char32_t value;
    std::size_t length;  ///< in bytes; 0 when the text does not begin with a well-formed sequence
};

inline bool IsContinuation(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80;
}

/// The one that @p text, which is not empty, begins with.
inline CodePoint FirstCodePoint(std::string_view text)
{
    const auto lead = static_cast<unsigned char>(text[0]);
    if (lead < 0x80) {
        return {lead, 1};
    }
    const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    if (lead < 0xC2 || lead > 0xF4 || text.size() < length) {
        return {lead, 0};
    }
    char32_t value = lead & (0x7FU >> length);
    for (const char byte : text.substr(1, length - 1)) {
        if (!IsContinuation(byte)) {
            return {lead, 0};
        }
        value = (value << 6) | (static_cast<unsigned char>(byte) & 0x3FU);
    }
    constexpr char32_t LEAST[] = {0, 0, 0x80, 0x800, 0x10000};
    const bool isScalar = value >= LEAST[length] && value <= 0x10FFFF && (value < 0xD800 || value > 0xDFFF);
    return {value, isScalar ? length : 0};
}

/// C0, DEL and C1: what steers a terminal.
inline bool IsControl(char32_t value)
{
    return value < 0x20 || (value >= 0x7F && value < 0xA0);
}

/// How many columns @p text takes: its code points.
inline std::size_t DisplayWidth(std::string_view text)
{
    return text.size() - static_cast<std::size_t>(std::count_if(text.begin(), text.end(), IsContinuation));
}

/// @p text and as many blanks as fill @p width columns.
inline std::string Padded(const std::string& text, std::size_t width)
{
    return text + std::string(width - std::min(width, DisplayWidth(text)), ' ');
}
}  // namespace Utf8
