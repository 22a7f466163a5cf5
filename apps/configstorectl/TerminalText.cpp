#include "TerminalText.h"

#include <fmt/format.h>

#include <algorithm>

#include "Utf8.h"

namespace ConfigStoreCtl
{
namespace
{
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
        const Utf8::CodePoint first = Utf8::FirstCodePoint(text);
        if (first.length == 0) {
            result += invalid(static_cast<unsigned char>(text[0]));
        } else {
            result += Utf8::IsControl(first.value) ? control(first.value) : std::string(text.substr(0, first.length));
        }
        text.remove_prefix(first.length == 0 ? 1 : first.length);
    }
    return result;
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

std::string CutToWidth(std::string_view text, std::size_t width)
{
    std::size_t taken = 0;
    const auto* const end =
        std::find_if(text.begin(), text.end(), [&](char c) { return !Utf8::IsContinuation(c) && ++taken > width; });
    return {text.begin(), end};
}
}  // namespace ConfigStoreCtl
