#include "ZelshLocal.h"

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <stdexcept>

#include "ZELSH.h"

namespace Zelsh
{
std::vector<std::string> Candidates(const std::string& line)
{
    std::vector<std::string> candidates;
    for (int state = 0;; ++state) {
        const std::unique_ptr<char, decltype(&std::free)> candidate(ZELSH_CommandGenerator(line.c_str(), state),
                                                                    &std::free);
        if (candidate == nullptr) {
            return candidates;
        }
        candidates.emplace_back(candidate.get());
    }
}

LocalShell::LocalShell()
{
    if (ZELSH_Init() != ORV_OK) {
        throw std::runtime_error("the kernel information interface cannot be used");
    }
}

int LocalShell::Run(const std::string& line)
{
    return ZELSH_ParseAndExecCmd(line.c_str());
}

/// A reader that has gone away ends the shell like "exit".
bool LocalShell::IsOver() const
{
    return shellTerminate != 0 || std::ferror(stdout) != 0;
}

PromptSource LocalShell::Prompt() const
{
    return [] { return zelshPrompt; };
}

Completer LocalShell::LineCompleter() const
{
    return Candidates;
}
}  // namespace Zelsh
