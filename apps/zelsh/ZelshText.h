#pragma once

#include <string>
#include <string_view>
#include <vector>

// Texts as the shell writes and reads them. What it writes is one line of printable UTF-8, whatever the kernel gave: a
// name or a value can neither steer a terminal, nor end a line, nor look like the end of a daemon's reply.
namespace Zelsh
{
/// Control characters, bytes that are not UTF-8 and the "<" of "<EOM>" become "\xNN".
std::string EscapeControls(std::string_view text);

/// The same, and a backslash becomes "\\": the bytes can be had back.
std::string EscapeValue(std::string_view text);

/// The same for an error message, whose tabs and new lines are its layout.
std::string EscapeMessage(std::string_view text);

/// A line that no client reads: the marker is a text like any other.
std::string EscapeDiagnostic(std::string_view text);

/// A Python literal: a string, or a byte string where @p text is not UTF-8.
std::string PythonText(std::string_view text);

/// A Python byte string.
std::string PythonBytes(std::string_view bytes);

/// Two digits a byte.
std::string Hexadecimal(std::string_view bytes);

/// A name as a component of a path: quoted unless it is plain.
std::string QuoteComponent(std::string_view name);

/// One word of a command line without its quotes, its escapes resolved.
std::string Unquote(std::string_view word);

struct Component
{
    std::string name;   ///< unquoted
    bool quoted;        ///< the component "." or ".." is then a name like any other
    std::size_t begin;  ///< in the text that it was taken from
};

/// The components of a path's text; empty ones too, so that the last says whether a slash stands behind the path.
std::vector<Component> SplitPath(std::string_view text);
}  // namespace Zelsh
