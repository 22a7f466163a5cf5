#pragma once

#include "ZelshLines.h"

namespace Zelsh
{
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
