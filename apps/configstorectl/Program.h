#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace ConfigStoreCtl
{
inline constexpr int EXIT_DONE = 0;
inline constexpr int EXIT_FAILED = 1;
inline constexpr int EXIT_WRONG_CALL = 2;

/// Runs one call of the program.
/// @param arguments  what follows the program's name.
/// @param terminal   @p output is a terminal that takes colours.
/// @return the exit status. A failure is one message on @p errors; @p output then has nothing, or a report whose
///         answer is bad news.
int RunProgram(const std::vector<std::string>& arguments, std::ostream& output, std::ostream& errors, bool terminal);
}  // namespace ConfigStoreCtl
