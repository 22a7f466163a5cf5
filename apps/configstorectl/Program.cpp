#include "Program.h"

#include <cerrno>
#include <filesystem>
#include <ostream>
#include <system_error>

#include "CSLogger.h"
#include "CommandLine.h"
#include "HostUtil.h"
#include "Output.h"
#include "TerminalText.h"
#include "Utf8.h"

namespace ConfigStoreCtl
{
namespace
{
/// A wrong call repeats the caller's own words; a long one is recognised by its beginning.
std::string Shortened(const std::string& message)
{
    constexpr std::size_t LONGEST = 500;
    return Utf8::DisplayWidth(message) <= LONGEST ? message : CutToWidth(message, LONGEST) + "...";
}

int Fail(std::ostream& errors, const std::string& message, int status)
{
    errors << "configstorectl: " << EscapeControls(message) << std::endl;
    return status;
}

/// A reader that has gone away has seen enough: the command failed, but nobody needs to be told.
int FailOutput(std::ostream& errors, const std::error_code& reason)
{
    return reason.value() == EPIPE
               ? EXIT_FAILED
               : Fail(errors, "standard output: cannot be written: " + reason.message(), EXIT_FAILED);
}

int PrintText(const std::string& text, std::ostream& output, std::ostream& errors)
{
    errno = 0;
    output << text << std::flush;
    return output ? EXIT_DONE : FailOutput(errors, {errno, std::generic_category()});
}

void SetUpHost(const Call& call)
{
    if (!call.root.empty()) {
        SetHostRoot(std::filesystem::canonical(call.root).string());
    }
    CSLogger::SetVerbose(call.verbose);
}

void RunHandler(const Call& call, Output& output, const ProgressPlace& place)
{
    const bool shown = call.command->isLong && !call.verbose;
    const Progress progress(shown ? place : ProgressPlace{});
    call.command->handler(call.arguments, output);
}

int RunCommand(const Call& call, Output& output, std::ostream& errors, const Terminal& terminal)
{
    try {
        SetUpHost(call);
        RunHandler(call, output, terminal.progress);
        output.Flush();
    } catch (const OutputFailure& failure) {
        return FailOutput(errors, failure.code());
    } catch (const std::exception& failure) {
        return Fail(errors, std::string(call.command->path) + ": " + failure.what(), EXIT_FAILED);
    }
    return output.Refusal().empty()
               ? output.Status()
               : Fail(errors, std::string(call.command->path) + ": " + output.Refusal(), EXIT_FAILED);
}
}  // namespace

int RunProgram(const std::vector<std::string>& arguments, std::ostream& output, std::ostream& errors,
               const Terminal& terminal)
{
    Call call;
    try {
        call = ParseCommandLine(arguments);
    } catch (const WrongCall& wrong) {
        return Fail(errors, Shortened(wrong.what()) + " (configstorectl --help lists the commands)", EXIT_WRONG_CALL);
    }
    if (call.command == nullptr) {
        return PrintText(call.text, output, errors);
    }
    Output result(output, {call.json, terminal.colour, terminal.columns});
    return RunCommand(call, result, errors, terminal);
}
}  // namespace ConfigStoreCtl
