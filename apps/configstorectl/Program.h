#pragma once

#include <cstddef>
#include <iosfwd>
#include <string>
#include <vector>

#include "Progress.h"

namespace ConfigStoreCtl
{
inline constexpr int EXIT_DONE = 0;
inline constexpr int EXIT_FAILED = 1;
inline constexpr int EXIT_WRONG_CALL = 2;
inline constexpr int EXIT_WOULD_CHANGE = 3;

/// What the program's streams are.
struct Terminal
{
    bool colour = false;      ///< standard output is a terminal that takes colours
    std::size_t columns = 0;  ///< of that terminal; 0: it is none, and lines may have any length
    ProgressPlace progress;   ///< standard error when that is a terminal
};

/// Runs one call of the program.
/// @param arguments  what follows the program's name.
/// @return the exit status. A failure is one message on @p errors; @p output then has nothing, or a report whose
///         answer is bad news.
int RunProgram(const std::vector<std::string>& arguments, std::ostream& output, std::ostream& errors,
               const Terminal& terminal);
}  // namespace ConfigStoreCtl
