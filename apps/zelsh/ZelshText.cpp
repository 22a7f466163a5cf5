#include "ZelshText.h"

#include <algorithm>
#include <cstdio>

#include "Utf8.h"

namespace Zelsh
{
namespace
{
std::string HexEscape(char byte)
{
    char escape[5];
    std::snprintf(escape, sizeof escape, "\\x%02x", static_cast<unsigned>(static_cast<unsigned char>(byte)));
    return escape;
}

struct Escaped
{
    std::string text;
    std::size_t length;  // of what it stands for
};

/// The character that @p text begins with. What is no character, or would do harm and is not in @p allowed, is written
/// byte by byte as escapes; so are the characters of @p special, a backslash among them as two.
Escaped EscapeFirst(std::string_view text, std::string_view special, std::string_view allowed)
{
    const Utf8::CodePoint first = Utf8::FirstCodePoint(text);
    const std::size_t length = first.length == 0 ? 1 : first.length;
    const bool isAllowed = allowed.find(text[0]) != std::string_view::npos;
    if (first.length != 0 && (isAllowed || (!Utf8::IsControl(first.value) && !text.starts_with(REPLY_END))) &&
        special.find(text[0]) == std::string_view::npos) {
        return {std::string(text.substr(0, length)), length};
    }
    std::string escaped;
    for (const char byte : text.substr(0, length)) {
        escaped += byte == '\\' ? "\\\\" : HexEscape(byte);
    }
    return {escaped, length};
}

/// How many bytes at the beginning of @p text stand for themselves whatever follows: nearly all that ever come.
std::size_t PlainLength(std::string_view text, std::string_view special)
{
    const auto isPlain = [special](char byte) {
        return byte >= ' ' && byte <= '~' && byte != '<' && special.find(byte) == std::string_view::npos;
    };
    return static_cast<std::size_t>(std::find_if_not(text.begin(), text.end(), isPlain) - text.begin());
}

std::string Escape(std::string_view text, std::string_view special, std::string_view allowed = {})
{
    std::string escaped;
    while (!text.empty()) {
        const std::size_t plain = PlainLength(text, special);
        escaped += text.substr(0, plain);
        text.remove_prefix(plain);
        if (!text.empty()) {
            const Escaped first = EscapeFirst(text, special, allowed);
            escaped += first.text;
            text.remove_prefix(first.length);
        }
    }
    return escaped;
}

bool IsUtf8(std::string_view text)
{
    while (!text.empty()) {
        const std::size_t length = Utf8::FirstCodePoint(text).length;
        if (length == 0) {
            return false;
        }
        text.remove_prefix(length);
    }
    return true;
}
}  // namespace

std::string EscapeControls(std::string_view text)
{
    return Escape(text, "");
}

std::string EscapeValue(std::string_view text)
{
    return Escape(text, "\\");
}

std::string EscapeName(std::string_view text)
{
    return Escape(text, "\\\"=");
}

std::string EscapeMessage(std::string_view text)
{
    return Escape(text, "", "\n\t");
}

std::string EscapeDiagnostic(std::string_view text)
{
    return Escape(text, "", "<");
}

std::string PythonBytes(std::string_view bytes)
{
    std::string literal = "b'";
    for (const char byte : bytes) {
        literal += HexEscape(byte);
    }
    return literal + "'";
}

std::string PythonText(std::string_view text)
{
    if (!IsUtf8(text)) {
        return PythonBytes(text);
    }
    std::string literal = "'";
    while (!text.empty()) {
        const std::size_t plain = PlainLength(text, "\\'");
        literal += text.substr(0, plain);
        text.remove_prefix(plain);
        if (text.empty()) {
            break;
        }
        const Utf8::CodePoint first = Utf8::FirstCodePoint(text);
        const Escaped escaped = EscapeFirst(text, "\\'", "");
        // Two bytes in UTF-8, but one number in an escape of Python's.
        const bool isWide = first.length == 2 && Utf8::IsControl(first.value);
        literal += isWide ? HexEscape(static_cast<char>(first.value)) : escaped.text;
        text.remove_prefix(escaped.length);
    }
    return literal + "'";
}

std::string Hexadecimal(std::string_view bytes)
{
    std::string digits;
    for (const char byte : bytes) {
        digits += HexEscape(byte).substr(2);
    }
    return digits;
}
}  // namespace Zelsh
