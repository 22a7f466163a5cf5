#pragma once

#include <string>

#include "ZelshCall.h"
#include "ZelshLineEditor.h"

namespace Zelsh
{
/// What runs lines: the shell of this process, or a daemon's.
class LineRunner
{
public:
    LineRunner() = default;
    virtual ~LineRunner() = default;
    LineRunner(const LineRunner&) = delete;
    LineRunner& operator=(const LineRunner&) = delete;

    /// @return the line's exit status.
    virtual int Run(const std::string& line) = 0;
    virtual bool IsOver() const = 0;
    virtual PromptSource Prompt() const = 0;
    virtual Completer LineCompleter() const = 0;
};

/// Runs the lines that the call names: its own, a file's, those of the terminal or of the input.
/// @return the status of the last. @throws std::runtime_error when the lines cannot be read.
int RunLines(const ProgramCall& call, LineRunner& runner);
}  // namespace Zelsh
