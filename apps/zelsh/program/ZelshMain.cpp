#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <exception>
#include <filesystem>
#include <stdexcept>

#include "HostUtil.h"
#include "StandardStreams.h"
#include "ZELSH.h"
#include "ZelshCall.h"
#include "ZelshClient.h"
#include "ZelshLocal.h"
#include "ZelshStandardOutput.h"
#include "ZelshText.h"

namespace
{
constexpr int EXIT_FAILED = 1;
constexpr int EXIT_WRONG_CALL = 2;

const ZELSHOutput* OutputNamed(const std::string& format)
{
    return format == "raw" ? zelshRawOutputPtr : format == "python" ? zelshPythonOutputPtr : zelshDefaultOutputPtr;
}

/// The daemon fails in the background, where its exit status is lost. So whoever starts it is told first whether the
/// address is to be had.
void CheckAddress()
{
    const int probe = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (probe < 0) {
        throw std::runtime_error(std::string("socket: ") + std::strerror(errno));
    }
    const int on = 1;
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(zelshListenPort);
    (void)inet_pton(AF_INET, zelshListenAddress, &address.sin_addr);  // was checked with the call
    (void)setsockopt(probe, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    const bool isFree = bind(probe, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    const int reason = errno;
    close(probe);
    if (!isFree) {
        throw std::runtime_error(std::string("bind: ") + zelshListenAddress + ":" + std::to_string(zelshListenPort) +
                                 ": " + std::strerror(reason));
    }
}

int Serve(const Zelsh::ProgramCall& call)
{
    const Zelsh::LocalShell shell;
    if (call.listen) {
        zelshListenAddress = call.listen->host.c_str();
        zelshListenPort = call.listen->port.value_or(zelshListenPort);
    }
    CheckAddress();
    ZELSHDaemon();
    return EXIT_FAILED;
}

int RunLocally(const Zelsh::ProgramCall& call)
{
    Zelsh::LocalShell shell;
    return RunLines(call, shell);
}

int RunRemotely(const Zelsh::ProgramCall& call)
{
    const std::unique_ptr<Zelsh::LineRunner> client = Zelsh::ConnectToDaemon(*call.connect, call.binary);
    return RunLines(call, *client);
}

int Run(const Zelsh::ProgramCall& call)
{
    if (!call.text.empty()) {
        std::fputs(call.text.c_str(), stdout);
        return 0;
    }
    if (!call.root.empty()) {
        SetHostRoot(std::filesystem::canonical(call.root).string());
    }
    options.output = OutputNamed(call.format);
    return call.daemon ? Serve(call) : call.connect ? RunRemotely(call) : RunLocally(call);
}

int Fail(const char* why, int status)
{
    std::fflush(stdout);
    std::fprintf(stderr, "zelsh: %s\n", Zelsh::EscapeControls(why).c_str());
    return status;
}

int Finish(int status)
{
    Zelsh::WriteOut();
    return status;
}
}  // namespace

int main(int count, char** arguments)
{
    OccupyStandardStreams();
    std::signal(SIGPIPE, SIG_IGN);
    try {
        return Finish(Run(Zelsh::UnderstandCall(count, arguments)));
    } catch (const Zelsh::WrongCall& wrong) {
        return Fail((std::string(wrong.what()) + " (see zelsh --help)").c_str(), EXIT_WRONG_CALL);
    } catch (const Zelsh::ReaderGone&) {
        return EXIT_FAILED;  // it has seen enough: nobody needs to be told
    } catch (const std::exception& failure) {
        return Fail(failure.what(), EXIT_FAILED);
    }
}
