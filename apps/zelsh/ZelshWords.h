#pragma once

#include <string>
#include <string_view>
#include <vector>

// Words and paths of a command line: names may be quoted, and hold escapes.
namespace Zelsh
{
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
