#include "ZelshWords.h"

#include <charconv>

#include "ZelshText.h"

namespace Zelsh
{
namespace
{
bool IsPlain(std::string_view name)
{
    constexpr std::string_view PLAIN = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_.:@%+,<>-";
    const bool isSpecial =
        name.empty() || name == "." || name == ".." || name.find(REPLY_END) != std::string_view::npos;
    return !isSpecial && name.find_first_not_of(PLAIN) == std::string_view::npos;
}

/// The byte that the escape at the beginning of @p text stands for and how long the escape is; 0 when it is none.
std::size_t TakeEscape(std::string_view text, char& byte)
{
    if (text.starts_with("\\\\")) {
        byte = '\\';
        return 2;
    }
    unsigned char value = 0;
    if (!text.starts_with("\\x") || text.size() < 4 ||
        std::from_chars(text.data() + 2, text.data() + 4, value, 16).ptr != text.data() + 4) {
        return 0;
    }
    byte = static_cast<char>(value);
    return 4;
}

/// Reads a word character by character.
class WordReader
{
public:
    explicit WordReader(std::string_view text) : text_(text) {}

    /// Adds what stands next to @p name: a character, or what an escape stands for; nothing for a quote.
    void Take(std::string& name)
    {
        char byte = text_[position_];
        const std::size_t escape = TakeEscape(text_.substr(position_), byte);
        if (escape == 0 && byte == '"') {
            quoting_ = !quoting_;
        } else {
            name += byte;
        }
        position_ += escape == 0 ? 1 : escape;
    }

    bool AtEnd() const { return position_ == text_.size(); }
    bool AtSlash() const { return !quoting_ && text_[position_] == '/'; }
    bool AtQuote() const { return text_[position_] == '"'; }
    std::size_t SkipSlash() { return ++position_; }

private:
    std::string_view text_;
    std::size_t position_ = 0;
    bool quoting_ = false;
};
}  // namespace

std::string QuoteComponent(std::string_view name)
{
    return IsPlain(name) ? std::string(name) : '"' + EscapeName(name) + '"';
}

std::string Unquote(std::string_view word)
{
    std::string text;
    for (WordReader reader(word); !reader.AtEnd();) {
        reader.Take(text);
    }
    return text;
}

std::vector<Component> SplitPath(std::string_view text)
{
    std::vector<Component> components = {{"", false, 0}};
    for (WordReader reader(text); !reader.AtEnd();) {
        if (reader.AtSlash()) {
            components.push_back({"", false, reader.SkipSlash()});
            continue;
        }
        components.back().quoted |= reader.AtQuote();
        reader.Take(components.back().name);
    }
    return components;
}
}  // namespace Zelsh
