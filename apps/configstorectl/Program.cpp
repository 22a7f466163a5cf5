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

namespace ConfigStoreCtl
{
namespace
{
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

int RunCommand(const Call& call, Output& output, std::ostream& errors)
{
    try {
        SetUpHost(call);
        call.command->handler(call.arguments, output);
        output.Flush();
    } catch (const OutputFailure& failure) {
        return FailOutput(errors, failure.code());
    } catch (const std::exception& failure) {
        return Fail(errors, std::string(call.command->path) + ": " + failure.what(), EXIT_FAILED);
    }
    return output.Refusal().empty()
               ? EXIT_DONE
               : Fail(errors, std::string(call.command->path) + ": " + output.Refusal(), EXIT_FAILED);
}
}  // namespace

int RunProgram(const std::vector<std::string>& arguments, std::ostream& output, std::ostream& errors, bool terminal)
{
    Call call;
    try {
        call = ParseCommandLine(arguments);
    } catch (const WrongCall& wrong) {
        return Fail(errors, std::string(wrong.what()) + " (configstorectl --help lists the commands)", EXIT_WRONG_CALL);
    }
    if (call.command == nullptr) {
        return PrintText(call.text, output, errors);
    }
    Output result(output, {call.json, terminal});
    return RunCommand(call, result, errors);
}
}  // namespace ConfigStoreCtl
