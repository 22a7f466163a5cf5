#include "ZelshLineEditor.h"

#include <unistd.h>
#include <algorithm>
#include <cstdio>
#include <string_view>

#include "Utf8.h"
#include "ZelshWords.h"

namespace Zelsh
{
namespace
{
constexpr int HISTORY_LINES = 1000;

/// The last word of a line, its quotes perhaps still open.
std::string LastWord(std::string_view line)
{
    bool quoting = false;
    std::size_t begin = 0;
    for (std::size_t i = 0; i < line.size(); ++i) {
        quoting ^= line[i] == '"';
        begin = !quoting && (line[i] == ' ' || line[i] == '\t') ? i + 1 : begin;
    }
    return std::string(line.substr(begin));
}

std::string CommonBeginning(const std::vector<std::string>& texts)
{
    std::string common = texts.front();
    for (const std::string& text : texts) {
        const auto end = std::mismatch(common.begin(), common.end(), text.begin(), text.end()).first;
        common.erase(end, common.end());
    }
    return common;
}

/// Where the last component of a path begins; a slash behind it belongs to it.
std::size_t LastComponent(const std::string& path)
{
    const std::vector<Component> components = SplitPath(path);
    const bool isBranch = components.size() > 1 && path.ends_with('/');
    return components[components.size() - (isBranch ? 2 : 1)].begin;
}
}  // namespace

LineEditor::LineEditor(PromptSource prompt, Completer completer)
    : prompt_(prompt),
      completer_(completer),
      editor_(el_init("zelsh", stdin, stdout, stderr), &el_end),
      history_(history_init(), &history_end)
{
    HistEvent event = {};
    history(history_.get(), &event, H_SETSIZE, HISTORY_LINES);
    history(history_.get(), &event, H_SETUNIQUE, 1);
    el_set(editor_.get(), EL_CLIENTDATA, this);
    el_set(editor_.get(), EL_PROMPT, &LineEditor::Prompt);
    el_set(editor_.get(), EL_EDITOR, "emacs");
    el_set(editor_.get(), EL_SIGNAL, 1);
    el_set(editor_.get(), EL_HIST, history, history_.get());
    // The call for narrow texts makes wide copies of them, and never frees those.
    el_wset(editor_.get(), EL_ADDFN, L"zelsh-complete", L"complete a command or path",
            static_cast<unsigned char (*)(EditLine*, wint_t)>(&LineEditor::Complete));
    el_set(editor_.get(), EL_BIND, "^I", "zelsh-complete", nullptr);
    el_set(editor_.get(), EL_BIND, "^R", "em-inc-search-prev", nullptr);
    el_wset(editor_.get(), EL_ADDFN, L"zelsh-drop-line", L"drop the line",
            static_cast<unsigned char (*)(EditLine*, wint_t)>(&LineEditor::Drop));
    el_source(editor_.get(), nullptr);  // the user's own bindings, when there are any
    // A key like any other while a line is edited, in whatever editor: as a signal it would end the shell.
    el_set(editor_.get(), EL_SETTY, "-d", "-intr", nullptr);
    el_set(editor_.get(), EL_BIND, "^C", "zelsh-drop-line", nullptr);
    el_set(editor_.get(), EL_BIND, "-a", "^C", "zelsh-drop-line", nullptr);
}

LineEditor& LineEditor::Of(EditLine* editor)
{
    void* self = nullptr;
    el_get(editor, EL_CLIENTDATA, &self);
    return *static_cast<LineEditor*>(self);
}

char* LineEditor::Prompt(EditLine* editor)
{
    return const_cast<char*>(Of(editor).prompt_());  // libedit only reads it
}

std::optional<std::string> LineEditor::Read()
{
    int length = 0;
    const char* line = nullptr;
    do {
        dropped_ = false;
        line = el_gets(editor_.get(), &length);
    } while (dropped_);
    if (line == nullptr || length <= 0) {
        return std::nullopt;
    }
    std::string text(line, static_cast<std::size_t>(length));
    text.erase(text.find_last_not_of("\r\n") + 1);
    if (text.find_first_not_of(" \t") != std::string::npos) {
        HistEvent event = {};
        history(history_.get(), &event, H_ENTER, text.c_str());
    }
    return text;
}

unsigned char LineEditor::Drop(EditLine* editor, wint_t)
{
    Of(editor).dropped_ = true;
    std::fputc('\n', stdout);
    return CC_NEWLINE;
}

unsigned char LineEditor::Complete(EditLine* editor, wint_t)
{
    return Of(editor).Complete();
}

unsigned char LineEditor::Complete()
{
    const LineInfo* info = el_line(editor_.get());
    const std::string line(info->buffer, info->cursor);
    const std::vector<std::string> candidates = completer_(line);
    if (candidates.empty()) {
        return CC_REFRESH_BEEP;
    }
    const std::string word = LastWord(line);
    std::string common = CommonBeginning(candidates);
    if (candidates.size() == 1 && common.back() != '/') {
        common += " ";
    }
    // Quotes may make a candidate differ from what was typed before it grows.
    if (candidates.size() > 1 && common.size() <= word.size()) {
        Show(candidates);
        return CC_REDISPLAY;
    }
    Replace(word, common);
    return CC_REFRESH;
}

void LineEditor::Replace(const std::string& word, const std::string& replacement)
{
    el_deletestr(editor_.get(), static_cast<int>(Utf8::DisplayWidth(word)));
    el_insertstr(editor_.get(), replacement.c_str());
}

void LineEditor::Show(const std::vector<std::string>& candidates)
{
    std::fputc('\n', stdout);
    for (const std::string& candidate : candidates) {
        std::fprintf(stdout, "%s  ", candidate.c_str() + LastComponent(candidate));
    }
    std::fputc('\n', stdout);
    std::fflush(stdout);
}
}  // namespace Zelsh
