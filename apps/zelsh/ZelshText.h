#pragma once

#include <string>
#include <string_view>

// Texts as the shell writes them: one line of printable UTF-8 each, whatever the kernel gave. A name or a value can
// neither steer a terminal, nor end a line, nor look like the end of a daemon's reply.
namespace Zelsh
{
/// Ends a reply of the daemon's text mode.
inline constexpr std::string_view REPLY_END = "<EOM>";

/// Control characters, bytes that are not UTF-8 and the "<" of "<EOM>" become "\xNN".
std::string EscapeControls(std::string_view text);

/// The same, and a backslash becomes "\\": the bytes can be had back.
std::string EscapeValue(std::string_view text);

/// The same for what stands between quotes in a line.
std::string EscapeName(std::string_view text);

/// Like EscapeControls for an error message, whose tabs and new lines are its layout.
std::string EscapeMessage(std::string_view text);

/// Like EscapeControls for a line that no client reads: the marker is a text like any other.
std::string EscapeDiagnostic(std::string_view text);

/// A Python literal: a string, or a byte string where @p text is not UTF-8.
std::string PythonText(std::string_view text);

/// A Python byte string.
std::string PythonBytes(std::string_view bytes);

/// Two digits a byte.
std::string Hexadecimal(std::string_view bytes);
}  // namespace Zelsh
