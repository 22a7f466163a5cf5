#include "CommandManual.h"

#include <cctype>
#include <sstream>

#include "CommandHelp.h"
#include "CommandTable.h"

namespace ConfigStoreCtl
{
namespace
{
constexpr std::size_t LINE = 78;

/// A line of help as a sentence, in lines that suit the manual's source.
std::string Sentence(const std::string& help)
{
    std::istringstream words(help);
    std::string text;
    std::size_t width = 0;
    for (std::string word; words >> word;) {
        const bool fits = width + 1 + word.size() <= LINE;
        text += text.empty() ? "" : fits ? " " : "\n";
        width = fits ? width + 1 + word.size() : word.size();
        text += word;
    }
    text[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(text[0])));
    return text + ".\n";
}

std::string Items(const Command& command)
{
    std::string items;
    for (const ArgumentRow& row : command.arguments) {
        items += std::string(".It Ar ") + row.name + "\n" + Sentence(row.help);
    }
    for (const OptionRow& row : command.options) {
        const std::string name = std::string(row.name).substr(1);  // Fl writes the first dash
        items += ".It Fl \\" + name + (row.value != nullptr ? std::string(" Ar ") + row.value : "") + "\n" +
                 Sentence(row.help);
    }
    return items.empty() ? "" : ".Bl -tag -width Ds -compact\n" + items + ".El\n";
}
}  // namespace

std::string ManualOfCommands()
{
    std::string manual = ".Bl -tag -width Ds\n";
    for (const Command& command : Commands()) {
        manual += ".It Ic " + Usage(command) + "\n" + Sentence(command.help) + Items(command);
    }
    return manual + ".El\n";
}
}  // namespace ConfigStoreCtl
