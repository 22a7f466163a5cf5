#pragma once

#include <string>
#include <vector>

#include "ZelshLines.h"

namespace Zelsh
{
/// What the shell of this process offers for the last word of @p line, the line up to the cursor.
std::vector<std::string> Candidates(const std::string& line);

/// The shell of this process. @throws std::runtime_error when the kernel's definitions are other ones.
class LocalShell final : public LineRunner
{
public:
    LocalShell();
    int Run(const std::string& line) override;
    bool IsOver() const override;
    PromptSource Prompt() const override;
    Completer LineCompleter() const override;
};
}  // namespace Zelsh
