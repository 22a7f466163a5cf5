#include "CommandLine.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <map>

#include "CommandHelp.h"

namespace ConfigStoreCtl
{
namespace
{
// The parser takes a repeated argument in brackets for a list, "++" for the end of a command and each "--" for the
// first. Behind a mark they pass as the plain texts that they are here, and so does a text that begins with the mark
// itself.
constexpr char MARK = '\x01';

std::string Marked(const std::string& text)
{
    return text == "++" || (!text.empty() && (text[0] == '[' || text[0] == MARK)) ? MARK + text : text;
}

/// What the parser reads: the words from the last to the first.
std::vector<std::string> Prepared(const std::vector<std::string>& words)
{
    const auto dashes = std::find(words.begin(), words.end(), "--");
    std::vector<std::string> prepared;
    for (auto word = words.begin(); word != words.end(); ++word) {
        prepared.push_back(word > dashes && *word == "--" ? MARK + *word : Marked(*word));
    }
    std::reverse(prepared.begin(), prepared.end());
    return prepared;
}

std::string Unmarked(std::string text)
{
    return !text.empty() && text[0] == MARK ? text.substr(1) : text;
}

/// The parser's own words, with the caller's somewhere among them.
std::string WithoutMarks(std::string text)
{
    text.erase(std::remove(text.begin(), text.end(), MARK), text.end());
    return text;
}

std::string CheckFolder(const std::string& text)
{
    return CLI::ExistingDirectory(Unmarked(text));
}

void AddCheck(ArgumentCheck check, CLI::Option* option)
{
    if (check != nullptr) {
        option->check([check](const std::string& text) { return check(Unmarked(text)); });
    }
}

/// The parser of the whole table.
class CommandLine
{
public:
    CommandLine();
    CommandLine(const CommandLine&) = delete;
    CommandLine& operator=(const CommandLine&) = delete;

    Call Parse(const std::vector<std::string>& arguments);

private:
    CLI::App* Group(const std::string& path);
    void Add(const Command& command);
    const CLI::App* Deepest() const;
    std::string Path(const CLI::App* app) const;
    Arguments Collect(const Command& command, const CLI::App* app) const;
    void Understand();
    [[noreturn]] void Refuse(const CLI::ParseError& error) const;

    CLI::App app_;
    Call call_;
    std::map<const CLI::App*, const Command*> commands_;
    std::map<const CLI::App*, std::vector<CLI::Option*>> positionals_;
    std::map<std::string, CLI::App*> groups_;  // by path
};

CommandLine::CommandLine() : app_("", "configstorectl")
{
    app_.fallthrough();
    app_.require_subcommand(0, 1);
    app_.set_help_flag("--help")->disable_flag_override();
    app_.set_version_flag("--version", "configstorectl " CONFIGSTORECTL_VERSION "\n")->disable_flag_override();
    app_.add_option("--root", call_.root)->check(CheckFolder);
    app_.add_flag("--json", call_.json)->disable_flag_override();
    app_.add_flag("-v,--verbose", call_.verbose)->disable_flag_override();
    for (const Command& command : Commands()) {
        Add(command);
    }
}

CLI::App* CommandLine::Group(const std::string& path)
{
    if (path.empty()) {
        return &app_;
    }
    const auto known = groups_.find(path);
    if (known != groups_.end()) {
        return known->second;
    }
    const std::size_t space = path.rfind(' ');
    CLI::App* parent = Group(space == std::string::npos ? "" : path.substr(0, space));
    CLI::App* group = parent->add_subcommand(path.substr(space + 1));  // the whole path when it is one word
    group->require_subcommand(0, 1);
    group->set_help_flag("--help")->disable_flag_override();
    return groups_[path] = group;
}

void CommandLine::Add(const Command& command)
{
    CLI::App* app = Group(command.path);
    commands_[app] = &command;
    for (const ArgumentRow& row : command.arguments) {
        const bool many = row.count == ArgumentRow::ANY_NUMBER || row.count == ArgumentRow::AT_LEAST_ONE;
        CLI::Option* option = app->add_option(row.name)->expected(many ? CLI::detail::expected_max_vector_size : 1);
        option->required(row.count == ArgumentRow::ONE || row.count == ArgumentRow::AT_LEAST_ONE);
        AddCheck(row.check, option);
        positionals_[app].push_back(option);
    }
    for (const OptionRow& row : command.options) {
        if (row.value == nullptr) {
            app->add_flag(row.name)->disable_flag_override();
        } else {
            CLI::Option* option =
                app->add_option(row.name)->expected(1)->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
            AddCheck(row.check, option);
        }
    }
}

/// The subcommand that the words of the call led to.
const CLI::App* CommandLine::Deepest() const
{
    const CLI::App* app = &app_;
    for (std::vector<CLI::App*> next = app_.get_subcommands(); !next.empty(); next = app->get_subcommands()) {
        app = next.front();
    }
    return app;
}

std::string CommandLine::Path(const CLI::App* app) const
{
    const auto found =
        std::find_if(groups_.begin(), groups_.end(), [app](const auto& group) { return group.second == app; });
    return found != groups_.end() ? found->first : "";
}

Arguments CommandLine::Collect(const Command& command, const CLI::App* app) const
{
    Arguments arguments;
    const auto positionals = positionals_.find(app);
    for (const CLI::Option* option :
         positionals != positionals_.end() ? positionals->second : std::vector<CLI::Option*>{}) {
        std::transform(option->results().begin(), option->results().end(), std::back_inserter(arguments.values),
                       Unmarked);
    }
    for (const OptionRow& row : command.options) {
        const CLI::Option* option = app->get_option(row.name);
        if (option->count() == 0) {
            continue;
        }
        std::vector<std::string>& values = arguments.options[row.name];
        if (row.value != nullptr) {
            std::transform(option->results().begin(), option->results().end(), std::back_inserter(values), Unmarked);
        }
    }
    return arguments;
}

void CommandLine::Refuse(const CLI::ParseError& error) const
{
    const std::string path = Path(Deepest());
    const std::vector<std::string> unexpected = app_.remaining(true);
    std::string why = WithoutMarks(error.what());
    if (dynamic_cast<const CLI::ExtrasError*>(&error) != nullptr && !unexpected.empty()) {
        const std::string first = Unmarked(unexpected.front());
        const bool group = commands_.count(Deepest()) == 0;
        why = (first.size() > 1 && first[0] == '-' ? "no such option: "
               : group                             ? "no such command: "
                                                   : "unexpected: ") +
              first;
    }
    throw WrongCall((path.empty() ? "" : path + ": ") + why);
}

void CommandLine::Understand()
{
    const CLI::App* app = Deepest();
    const auto command = commands_.find(app);
    if (command == commands_.end()) {
        throw WrongCall((app == &app_ ? "" : Path(app) + ": ") + std::string("no command given"));
    }
    call_.command = command->second;
    call_.arguments = Collect(*call_.command, app);
    call_.root = Unmarked(call_.root);
}

Call CommandLine::Parse(const std::vector<std::string>& arguments)
{
    try {
        app_.parse(Prepared(arguments));
        Understand();
    } catch (const CLI::CallForHelp&) {
        call_.text = HelpText(Path(Deepest()));
    } catch (const CLI::CallForVersion& version) {
        call_.text = version.what();
    } catch (const CLI::ParseError& error) {
        Refuse(error);
    }
    return call_;
}
}  // namespace

Call ParseCommandLine(const std::vector<std::string>& arguments)
{
    return CommandLine().Parse(arguments);
}
}  // namespace ConfigStoreCtl
