#pragma once

#include <histedit.h>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace Zelsh
{
/// What may stand in place of the last word of the line up to the cursor.
using Completer = std::vector<std::string> (*)(const std::string& line);

using PromptSource = const char* (*)();

/// Reads lines from a terminal, with editing, history and completion.
class LineEditor
{
public:
    /// @p prompt is asked before each line.
    LineEditor(PromptSource prompt, Completer completer);
    LineEditor(const LineEditor&) = delete;
    LineEditor& operator=(const LineEditor&) = delete;

    /// The next line without its end; nothing when there are no more. Ctrl-C drops a line and begins another.
    std::optional<std::string> Read();

private:
    static LineEditor& Of(EditLine* editor);
    static char* Prompt(EditLine* editor);
    static unsigned char Complete(EditLine* editor, wint_t key);
    static unsigned char Drop(EditLine* editor, wint_t key);
    unsigned char Complete();
    void Replace(const std::string& word, const std::string& replacement);
    static void Show(const std::vector<std::string>& candidates);

    PromptSource prompt_;
    Completer completer_;
    bool dropped_ = false;
    std::unique_ptr<EditLine, decltype(&el_end)> editor_;
    std::unique_ptr<History, decltype(&history_end)> history_;
};
}  // namespace Zelsh
