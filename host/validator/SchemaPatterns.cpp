#include "SchemaPatterns.h"

#include <algorithm>
#include <cstdlib>
#include <stdexcept>
#include <vector>

namespace JsonSchema
{
namespace
{
// The compiler recurses over the pattern and the matcher over its states, so both are kept small.
constexpr std::size_t MAX_PATTERN_BYTES = 2048;
constexpr double MAX_STATES = 2048;

constexpr std::size_t MAX_KEPT = 256;

/// Estimates, to within a small factor, the states that a pattern compiles to: a counted repetition copies what it
/// repeats. Reads the pattern as its compiler does; what that refuses may be read in any way.
class StateEstimate
{
public:
    explicit StateEstimate(std::string_view pattern) : pattern_(pattern) {}

    double Count()
    {
        for (; at_ < pattern_.size(); ++at_) {
            Take(pattern_[at_]);
        }
        while (open_.size() > 1) {
            CloseGroup();
        }
        return open_.back();
    }

private:
    void Take(char c)
    {
        switch (c) {
            case '(':
                OpenGroup();
                break;
            case ')':
                CloseGroup();
                break;
            case '[':
                SkipSet();
                Add(1);
                break;
            case '{':
                Repeat();
                EndQuantifier();
                break;
            case '*':
            case '+':
            case '?':
                Add(1);
                EndQuantifier();
                break;
            case '\\':
                SkipEscape();
                Add(1);
                break;
            default:
                Add(1);
        }
    }

    void Add(double states)
    {
        last_ = states;
        open_.back() += states;
    }

    /// The "?" of "(?:", "(?=" and "(?!" repeats nothing.
    void OpenGroup()
    {
        open_.push_back(0);
        at_ += Next() == '?' ? 1 : 0;
    }

    void CloseGroup()
    {
        if (open_.size() > 1) {
            const double inner = open_.back() + 2;
            open_.pop_back();
            Add(inner);
        }
    }

    void SkipSet()
    {
        for (++at_; at_ < pattern_.size() && pattern_[at_] != ']'; ++at_) {
            if (pattern_[at_] == '\\') {
                SkipEscape();
            } else if (pattern_[at_] == '[') {
                SkipClass();
            }
        }
    }

    /// "[:alpha:]", "[.a.]" and "[=a=]" inside a set hold a "]" that does not end it.
    void SkipClass()
    {
        const char kind = Next();
        if (kind == ':' || kind == '.' || kind == '=') {
            const std::size_t end = pattern_.find(kind, at_ + 2);
            at_ = end == std::string_view::npos ? pattern_.size() : end + 1;
        }
    }

    /// "\c" takes the character behind it too, whatever that is.
    void SkipEscape() { at_ += Next() == 'c' ? 2 : 1; }

    /// The compiler takes "a{40}{40}{40}" and "a?*{40}" as repetitions of repetitions.
    void EndQuantifier()
    {
        at_ += Next() == '?' ? 1 : 0;
        if (const char next = Next(); next == '*' || next == '+' || next == '?' || next == '{') {
            throw std::runtime_error("a quantifier stands directly behind another one");
        }
    }

    char Next() const { return at_ + 1 < pattern_.size() ? pattern_[at_ + 1] : '\0'; }

    void Repeat()
    {
        const std::size_t end = std::min(pattern_.find('}', at_), pattern_.size());
        double most = 1;
        for (std::size_t digit = at_ + 1; digit < end; ++digit) {
            const bool starts = pattern_[digit - 1] == '{' || pattern_[digit - 1] == ',';
            most = starts ? std::max(most, std::atof(std::string(pattern_.substr(digit, end - digit)).c_str())) : most;
        }
        Add(last_ * most);
        at_ = end;
    }

    std::string_view pattern_;
    std::size_t at_ = 0;
    double last_ = 0;
    std::vector<double> open_{0};
};

std::regex Compile(const std::string& pattern)
{
    if (pattern.size() > MAX_PATTERN_BYTES || StateEstimate(pattern).Count() > MAX_STATES) {
        throw std::runtime_error("the pattern is too large");
    }
    // The usual matcher of the standard library recurses once per character: a text of some 20,000 characters ends the
    // process. This one walks all alternatives at once.
    return std::regex(pattern, std::regex::ECMAScript | std::regex_constants::__polynomial);
}
}  // namespace

const std::regex& SchemaPatterns::Compiled(std::string_view pattern)
{
    const auto known = compiled_.find(pattern);
    if (known != compiled_.end()) {
        return known->second;
    }
    std::string text(pattern);
    std::regex expression = Compile(text);
    return compiled_.emplace(std::move(text), std::move(expression)).first->second;
}

SchemaPatterns& SchemaPatterns::OfThread()
{
    thread_local SchemaPatterns patterns;
    if (patterns.compiled_.size() > MAX_KEPT) {
        patterns.compiled_.clear();
    }
    return patterns;
}

bool SchemaPatterns::Matches(std::string_view pattern, std::string_view text)
{
    return std::regex_search(text.begin(), text.end(), Compiled(pattern));
}
}  // namespace JsonSchema
