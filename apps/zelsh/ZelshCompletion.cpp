#include <cstring>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "ZelshCommands.h"
#include "ZelshPath.h"
#include "ZelshWords.h"

namespace Zelsh
{
namespace
{
/// The words of a line, the last one perhaps unfinished: empty behind a blank, its quotes perhaps open.
std::vector<std::string> Words(std::string_view line)
{
    std::vector<std::string> words;
    bool quoting = false;
    bool between = true;
    for (const char byte : line) {
        quoting ^= byte == '"';
        const bool isBlank = !quoting && std::strchr(" \t\n\v\f\r", byte) != nullptr;
        if (!isBlank && between) {
            words.emplace_back();
        }
        if (!isBlank) {
            words.back() += byte;
        }
        between = isBlank;
    }
    if (between) {
        words.emplace_back();
    }
    return words;
}

std::vector<std::string> CommandCandidates(const std::string& word)
{
    std::vector<std::string> candidates;
    for (std::size_t i = 0; const Command* command = CommandAt(i); ++i) {
        if (std::string_view(command->name).starts_with(word)) {
            candidates.emplace_back(command->name);
        }
    }
    return candidates;
}

std::vector<std::string> PathCandidates(const std::string& word, const Command& command)
{
    const Component last = SplitPath(word).back();
    const std::string folder = word.substr(0, last.begin);
    const std::optional<ZELSHPath> branch = Resolve(folder, WorkingDirectory(), command.typeLevel);
    std::vector<std::string> names;
    std::vector<std::string> candidates;
    if (!branch || IsLeaf(*branch) || ListChildren(*branch, command.typeLevel, names) != ORV_OK) {
        return candidates;
    }
    for (const std::string& name : names) {
        ZELSHPath child = *branch;
        if (name.starts_with(last.name) && Enter(child, name, command.typeLevel) &&
            !(command.operand == Operand::BRANCH && IsLeaf(child))) {
            candidates.push_back(folder + QuoteComponent(name) + (IsLeaf(child) ? "" : "/"));
        }
    }
    return candidates;
}

std::vector<std::string> Candidates(const char* line)
{
    const std::vector<std::string> words = Words(line);
    if (words.size() == 1) {
        return CommandCandidates(words[0]);
    }
    const Command* command = FindCommand(words[0].c_str());
    const bool takesPath = command != nullptr && command->operand != Operand::NONE;
    return takesPath ? PathCandidates(words.back(), *command) : std::vector<std::string>();
}
}  // namespace
}  // namespace Zelsh

char* ZELSH_CommandGenerator(const char* line, int state)
{
    static std::vector<std::string> candidates;
    static std::size_t next = 0;
    try {
        if (state == 0) {
            candidates = Zelsh::Candidates(line != nullptr ? line : "");
            next = 0;
        }
    } catch (...)  // nothing but memory can run out here
    {
        candidates.clear();
    }
    return next < candidates.size() ? strdup(candidates[next++].c_str()) : nullptr;
}
