#include "ShellCompletion.h"

#include <algorithm>
#include <exception>
#include <filesystem>
#include <set>
#include <string_view>

#include "CommandTable.h"
#include "HostUtil.h"

namespace ConfigStoreCtl
{
namespace
{
constexpr const char* ROOT_OPTION = "--root";

/// What the words before the one to be completed say.
struct Typed
{
    std::string path;              // the command's words
    std::size_t arguments = 0;     // how many positional ones it has
    bool awaitsValue = false;      // the last word is an option that takes one
    bool argumentsAlone = false;   // "--" was given
    const Command* row = nullptr;  // null while the words name a group only
};

const Command* RowOf(const std::string& path)
{
    for (const Command& command : Commands()) {
        if (command.path == path) {
            return &command;
        }
    }
    return nullptr;
}

/// The names of "-v, --verbose".
std::vector<std::string> NamesOf(const GlobalOption& option)
{
    const std::string names = option.names;
    const std::size_t comma = names.find(", ");
    return comma == std::string::npos ? std::vector<std::string>{names}
                                      : std::vector<std::string>{names.substr(0, comma), names.substr(comma + 2)};
}

bool TakesValue(const Typed& typed, const std::string& option)
{
    if (option == ROOT_OPTION) {
        return true;
    }
    return typed.row != nullptr &&
           std::any_of(typed.row->options.begin(), typed.row->options.end(),
                       [&](const OptionRow& row) { return option == row.name && row.value != nullptr; });
}

void Take(const std::string& word, Typed& typed)
{
    const std::string path = typed.path + (typed.path.empty() ? "" : " ") + word;
    if (typed.awaitsValue) {
        typed.awaitsValue = false;
    } else if (!typed.argumentsAlone && word == "--") {
        typed.argumentsAlone = true;
    } else if (!typed.argumentsAlone && word.size() > 1 && word[0] == '-') {
        typed.awaitsValue = TakesValue(typed, word);
    } else if (!typed.argumentsAlone && typed.arguments == 0 && !CommandsBelow(path).empty()) {
        typed.path = path;
        typed.row = RowOf(path);
    } else {
        ++typed.arguments;
    }
}

void UseRoot(const std::vector<std::string>& words)
{
    const std::string equals = std::string(ROOT_OPTION) + "=";
    for (std::size_t i = 0; i + 1 < words.size(); ++i) {
        const std::string root = words[i] == ROOT_OPTION          ? words[i + 1]
                                 : words[i].rfind(equals, 0) == 0 ? words[i].substr(equals.size())
                                                                  : "";
        if (std::error_code failure; !root.empty() && std::filesystem::is_directory(root, failure)) {
            SetHostRoot(std::filesystem::canonical(root).string());
        }
    }
}

/// Candidates that begin with the word to be completed, each once.
class Offer
{
public:
    explicit Offer(std::string_view beginning) : beginning_(beginning) {}

    void Add(const std::string& word, const std::string& help)
    {
        if (word.starts_with(beginning_) && known_.insert(word).second) {
            candidates_.push_back({word, help});
        }
    }

    /// A text of several parts is offered up to the next "/": thousands of objects are a handful of components.
    void AddValue(const std::string& value)
    {
        const std::size_t slash = value.find('/', beginning_.size());
        Add(slash == std::string::npos ? value : value.substr(0, slash + 1), "");
    }

    const std::vector<Candidate>& All() const { return candidates_; }

private:
    std::string_view beginning_;
    std::set<std::string> known_;
    std::vector<Candidate> candidates_;
};

void OfferOptions(const Typed& typed, Offer& offer)
{
    for (const OptionRow& row : typed.row != nullptr ? typed.row->options : std::vector<OptionRow>{}) {
        offer.Add(row.name, row.help);
    }
    for (const GlobalOption& option : GlobalOptions()) {
        for (const std::string& name : NamesOf(option)) {
            offer.Add(name, option.help);
        }
    }
}

/// The words that go on from the path, with the help of those that are a command's last.
void OfferWords(const Typed& typed, Offer& offer)
{
    const std::string before = typed.path + (typed.path.empty() ? "" : " ");
    for (const Command* command : CommandsBelow(typed.path)) {
        const std::string path = command->path;
        if (path.size() > before.size()) {
            const std::size_t space = path.find(' ', before.size());
            offer.Add(path.substr(before.size(), space - before.size()),
                      space == std::string::npos ? command->help : "");
        }
    }
}

void OfferValues(const Typed& typed, Offer& offer)
{
    if (typed.row == nullptr || typed.row->arguments.empty()) {
        return;
    }
    const std::vector<ArgumentRow>& rows = typed.row->arguments;
    const bool repeats = rows.back().count == ArgumentRow::ANY_NUMBER || rows.back().count == ArgumentRow::AT_LEAST_ONE;
    const std::size_t index = repeats ? std::min(typed.arguments, rows.size() - 1) : typed.arguments;
    if (index >= rows.size() || rows[index].source == nullptr) {
        return;
    }
    try {
        for (const std::string& value : rows[index].source()) {
            offer.AddValue(value);
        }
    } catch (const std::exception&) {
        return;  // a store that cannot be read has nothing to offer; the call itself will say why
    }
}
}  // namespace

std::vector<Candidate> CandidatesFor(const std::vector<std::string>& words)
{
    const std::string last = words.empty() ? "" : words.back();
    Typed typed;
    for (std::size_t i = 0; i + 1 < words.size(); ++i) {
        Take(words[i], typed);
    }
    UseRoot(words);
    Offer offer(last);
    if (typed.awaitsValue) {
        return {};
    }
    if (!typed.argumentsAlone && last.starts_with("-")) {
        OfferOptions(typed, offer);
        return offer.All();
    }
    if (!typed.argumentsAlone && typed.arguments == 0) {
        OfferWords(typed, offer);
    }
    OfferValues(typed, offer);
    return offer.All();
}
}  // namespace ConfigStoreCtl
