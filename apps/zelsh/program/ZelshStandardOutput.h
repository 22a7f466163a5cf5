#pragma once

#include <stdexcept>
#include <string>

namespace Zelsh
{
/// What was printed did not reach the standard output.
class OutputLost : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// Nobody reads the standard output any more.
class ReaderGone : public OutputLost
{
public:
    ReaderGone() : OutputLost("standard output: the reader has gone") {}
};

/// Writes out what was printed. @throws OutputLost when that, or an earlier write, failed.
void WriteOut();
}  // namespace Zelsh
