#include "CommandHelp.h"

#include <fmt/format.h>

#include <algorithm>

namespace ConfigStoreCtl
{
namespace
{
using Line = std::pair<std::string, std::string>;

std::string ArgumentUsage(const ArgumentRow& row)
{
    std::string name = row.name;
    switch (row.count) {
        case ArgumentRow::ONE:
            return name;
        case ArgumentRow::OPTIONAL:
            return "[" + name + "]";
        case ArgumentRow::ANY_NUMBER:
            return "[" + name + "...]";
        case ArgumentRow::AT_LEAST_ONE:
            break;
    }
    return name + "...";
}

std::string OptionUsage(const OptionRow& row)
{
    return row.value == nullptr ? row.name : std::string(row.name) + " " + row.value;
}

std::string Section(const std::string& title, const std::vector<Line>& lines)
{
    if (lines.empty()) {
        return "";
    }
    std::size_t width = 0;
    for (const Line& line : lines) {
        width = std::max(width, line.first.size());
    }
    std::string text = "\n" + title + ":\n";
    for (const Line& line : lines) {
        text += fmt::format("  {:<{}}  {}\n", line.first, width, line.second);
    }
    return text;
}

std::string CommandHelp(const Command& command)
{
    std::vector<Line> arguments;
    for (const ArgumentRow& row : command.arguments) {
        arguments.emplace_back(row.name, row.help);
    }
    std::vector<Line> options;
    for (const OptionRow& row : command.options) {
        options.emplace_back(OptionUsage(row), row.help);
    }
    return "usage: configstorectl " + Usage(command) + "\n\n" + command.help + "\n" + Section("arguments", arguments) +
           Section("options", options);
}

std::string GlobalOptionsHelp()
{
    std::vector<Line> lines;
    for (const GlobalOption& option : GlobalOptions()) {
        lines.emplace_back(option.names + (option.value != nullptr ? std::string(" ") + option.value : ""),
                           option.help);
    }
    return Section("options of every command", lines);
}
}  // namespace

std::string Usage(const Command& command)
{
    std::string usage = command.path;
    for (const OptionRow& row : command.options) {
        usage += " [" + OptionUsage(row) + "]" + (row.value != nullptr ? "..." : "");
    }
    for (const ArgumentRow& row : command.arguments) {
        usage += " " + ArgumentUsage(row);
    }
    return usage;
}

std::string HelpText(const std::string& path)
{
    const std::vector<const Command*> commands = CommandsBelow(path);
    const std::string options = GlobalOptionsHelp();
    if (commands.size() == 1 && commands.front()->path == path) {
        return CommandHelp(*commands.front()) + options;
    }
    std::vector<Line> lines;
    lines.reserve(commands.size());
    for (const Command* command : commands) {
        lines.emplace_back(Usage(*command), command->help);
    }
    const std::string words = path.empty() ? "COMMAND" : path + " COMMAND";
    return "usage: configstorectl [--root DIR] [--json] [-v] " + words + "\n" + Section("commands", lines) + options +
           "\nExit status: 0 done, 1 the operation failed, 2 the call was wrong, "
           "3 the next boot would change something.\n";
}
}  // namespace ConfigStoreCtl
