#pragma once

#include <string_view>

namespace Zelsh
{
/// ZELSHPrintf without a format.
void Print(std::string_view text);

/// True when nobody can read any more what is printed: whoever prints much looks now and then.
bool OutputIsGone();

/// Writes "FUNCTION():MESSAGE" to standard error when the verbosity is at least @p verbosity, and flushes all streams.
void Diagnose(int verbosity, const char* function, const char* format, ...) __attribute__((format(printf, 3, 4)));

/// Writes a line to standard error, escaped like a diagnostic.
void Trace(const char* format, ...) __attribute__((format(printf, 1, 2)));
}  // namespace Zelsh
