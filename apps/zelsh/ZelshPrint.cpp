#include "ZelshPrint.h"

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <new>
#include <string>

#include "ZELSH.h"
#include "ZelshSend.h"
#include "ZelshText.h"

namespace Zelsh
{
namespace
{
using Text = std::unique_ptr<char, decltype(&std::free)>;

/// Null when memory ran out.
Text Format(const char* format, va_list arguments, int& length)
{
    char* text = nullptr;
    length = vasprintf(&text, format, arguments);
    return {length < 0 ? nullptr : text, &std::free};
}

/// One line on standard error, behind the name of @p function when there is one.
void PrintLine(const char* function, const char* format, va_list arguments, std::string (*escape)(std::string_view))
{
    const char* const mark = *function != '\0' ? "():" : "";
    int length = 0;
    const Text text = Format(format, arguments, length);
    try {
        const std::string line = text != nullptr ? escape(text.get()) : "Out of memory";
        std::fprintf(stderr, "%s%s%s\n", function, mark, line.c_str());
    } catch (const std::bad_alloc&) {
        std::fprintf(stderr, "%s%sOut of memory\n", function, mark);
    }
}
}  // namespace

void Print(std::string_view text)
{
    if (options.daemon != 0) {
        SendOutput(text);
    } else {
        std::fwrite(text.data(), 1, text.size(), stdout);
    }
}

bool OutputIsGone()
{
    return options.daemon != 0 ? shellTerminate != 0 : std::ferror(stdout) != 0;
}

void Diagnose(int verbosity, const char* function, const char* format, ...)
{
    if (options.verbosity < verbosity) {
        return;
    }
    va_list arguments;
    va_start(arguments, format);
    PrintLine(function, format, arguments, EscapeDiagnostic);
    va_end(arguments);
    std::fflush(nullptr);
}

void Trace(const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    PrintLine("", format, arguments, EscapeDiagnostic);
    va_end(arguments);
}
}  // namespace Zelsh

void ZELSHPrintf(const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    int length = 0;
    const Zelsh::Text text = Zelsh::Format(format, arguments, length);
    va_end(arguments);
    if (text != nullptr) {
        Zelsh::Print({text.get(), static_cast<std::size_t>(length)});
    }
}

void ZELSHError(const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    if (options.daemon != 0) {
        ZELSHSendError(format, arguments);
    } else {
        std::fflush(stdout);
        Zelsh::PrintLine("", format, arguments, Zelsh::EscapeMessage);
    }
    va_end(arguments);
}
