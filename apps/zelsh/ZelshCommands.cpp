#include "ZelshCommands.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <iterator>
#include <string_view>

namespace Zelsh
{
namespace
{
ORV_ReturnStatus SetLogLevel(const Call& call)
{
    if (call.count < 2) {
        ZELSHError("loglevel: expected a number; the level is %d", options.verbosity);
        return ORV_OK;
    }
    const std::string_view text = call.arguments[1];
    std::int32_t level = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), level);
    if (error != std::errc() || end != text.data() + text.size()) {
        ZELSHError("loglevel: expected a number, found \"%s\"; the level is %d", call.arguments[1], options.verbosity);
        return ORV_BAD_PARAM;
    }
    options.verbosity = level;
    return ORV_OK;
}

ORV_ReturnStatus Quit(const Call&)
{
    shellTerminate = 1;
    return ORV_OK;
}

ORV_ReturnStatus PrintHelp(const Call&)
{
    for (std::size_t i = 0; const Command* command = CommandAt(i); ++i) {
        ZELSHPrintf("\t%s\t - %s\n", command->name, command->help);
    }
    return ORV_OK;
}

constexpr Command COMMANDS[] = {
    {"cd", "change working directory", ChangeDirectory, Operand::BRANCH},
    {"ls", "list nodes", ListNodes, Operand::NODE},
    {"dir", "list nodes", ListNodes, Operand::NODE},
    {"pwd", "print working directory", PrintDirectory, Operand::NONE},
    {"get", "perform GET operation", Get, Operand::NODE},
    {"cat", "synonym for GET", Get, Operand::NODE},
    {"set", "perform SET operation", Set, Operand::NODE},
    {"typeget", "get type information", DescribeType, Operand::NODE, true},
    {"typels", "list type-level nodes", ListNodes, Operand::NODE, true},
    {"loglevel", "set debugging log level", SetLogLevel, Operand::NONE},
    {"exit", "quit shell", Quit, Operand::NONE},
    {"quit", "quit shell", Quit, Operand::NONE},
    {"q", "quit shell", Quit, Operand::NONE},
    {"help", "print help", PrintHelp, Operand::NONE},
};
}  // namespace

const Command* CommandAt(std::size_t index)
{
    return index < std::size(COMMANDS) ? &COMMANDS[index] : nullptr;
}

const Command* FindCommand(const char* name)
{
    const auto* found = std::find_if(std::begin(COMMANDS), std::end(COMMANDS),
                                     [name](const Command& command) { return std::strcmp(command.name, name) == 0; });
    return found != std::end(COMMANDS) ? found : nullptr;
}
}  // namespace Zelsh
