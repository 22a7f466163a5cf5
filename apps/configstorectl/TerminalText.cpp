#include "TerminalText.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>

namespace ConfigStoreCtl
{
namespace
{
struct CodePoint
{
    char32_t value;
    std::size_t length;  // in bytes; 0 when the text does not begin with a well-formed sequence
};

std::size_t SequenceLength(unsigned char lead)
{
    if (lead < 0x80) {
        return 1;
    }
    if (lead < 0xC2 || lead > 0xF4) {
        return 0;
    }
    return lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
}

bool IsScalar(char32_t value, std::size_t length)
{
    const char32_t least[] = {0, 0, 0x80, 0x800, 0x10000};
    return value >= least[length] && value <= 0x10FFFF && (value < 0xD800 || value > 0xDFFF);
}

CodePoint FirstCodePoint(std::string_view text)
{
    const auto lead = static_cast<unsigned char>(text[0]);
    const std::size_t length = SequenceLength(lead);
    if (length < 2) {
        return {lead, length};
    }
    if (text.size() < length) {
        return {lead, 0};
    }
    char32_t value = lead & (0x7FU >> length);
    for (std::size_t i = 1; i < length; ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        if ((byte & 0xC0U) != 0x80) {
            return {lead, 0};
        }
        value = (value << 6) | (byte & 0x3FU);
    }
    return {value, IsScalar(value, length) ? length : 0};
}

bool IsControl(char32_t value)
{
    return value < 0x20 || (value >= 0x7F && value < 0xA0);
}

std::string ControlEscape(char32_t value)
{
    switch (value) {
        case '\n':
            return "\\n";
        case '\t':
            return "\\t";
        case '\r':
            return "\\r";
        default:
            const auto number = static_cast<unsigned>(value);
            return value < 0x80 ? fmt::format("\\x{:02x}", number) : fmt::format("\\u{:04x}", number);
    }
}

/// Copies @p text; @p control and @p invalid say what stands for a control character and for a stray byte.
template <class Control, class Invalid>
std::string Rewrite(std::string_view text, Control control, Invalid invalid)
{
    std::string result;
    while (!text.empty()) {
        const CodePoint first = FirstCodePoint(text);
        if (first.length == 0) {
            result += invalid(static_cast<unsigned char>(text[0]));
        } else {
            result += IsControl(first.value) ? control(first.value) : std::string(text.substr(0, first.length));
        }
        text.remove_prefix(first.length == 0 ? 1 : first.length);
    }
    return result;
}

bool BeginsCodePoint(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80;
}
}  // namespace

std::string EscapeControls(std::string_view text)
{
    return Rewrite(text, ControlEscape, [](unsigned char byte) { return fmt::format("\\x{:02x}", byte); });
}

std::string EscapeJsonControls(std::string_view json)
{
    // Below 0x20 only the serialiser's own line feeds are left; inside texts it has escaped them already.
    const auto control = [](char32_t value) {
        return value < 0x20 ? std::string(1, static_cast<char>(value))
                            : fmt::format("\\u{:04x}", static_cast<unsigned>(value));
    };
    return Rewrite(json, control, [](unsigned char) { return std::string("\xEF\xBF\xBD"); });
}

std::size_t DisplayWidth(std::string_view text)
{
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), BeginsCodePoint));
}

std::string CutToWidth(std::string_view text, std::size_t width)
{
    std::size_t taken = 0;
    const auto* const end =
        std::find_if(text.begin(), text.end(), [&](char c) { return BeginsCodePoint(c) && ++taken > width; });
    return {text.begin(), end};
}
}  // namespace ConfigStoreCtl
