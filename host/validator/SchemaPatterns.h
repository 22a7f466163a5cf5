#pragma once

#include <functional>
#include <regex>
#include <string>
#include <string_view>
#include <unordered_map>

namespace JsonSchema
{
/// Regular expressions in the ECMAScript grammar, compiled once each and matched without recursion over the text: the
/// time is linear in the text, whatever the pattern, and so is nothing on the stack. Back references, which cannot be
/// matched that way, do not compile.
class SchemaPatterns
{
public:
    /// @throws std::runtime_error with the reason when the pattern does not compile or is too large.
    const std::regex& Compiled(std::string_view pattern);

    /// True when the pattern matches anywhere in @p text.
    bool Matches(std::string_view pattern, std::string_view text);

    /// The patterns that this thread has compiled: compiling one costs more than most values do. Kept from one
    /// validation to the next, as long as they are not too many.
    static SchemaPatterns& OfThread();

private:
    /// Looks a pattern up without copying it.
    struct Hash : std::hash<std::string_view>
    {
        using is_transparent = void;
    };
    std::unordered_map<std::string, std::regex, Hash, std::equal_to<>> compiled_;
};
}  // namespace JsonSchema
