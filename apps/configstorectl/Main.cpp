#include <sys/ioctl.h>
#include <unistd.h>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <iostream>

#include "Program.h"
#include "StandardStreams.h"

namespace
{
bool IsSet(const char* variable)
{
    const char* value = std::getenv(variable);
    return value != nullptr && *value != '\0';
}

/// The columns of a terminal; 0 when the stream is none, or one that does not say.
std::size_t Columns(int stream)
{
    winsize size{};
    return isatty(stream) == 1 && ioctl(stream, TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

bool IsDumb()
{
    const char* terminal = std::getenv("TERM");
    return terminal != nullptr && std::strcmp(terminal, "dumb") == 0;
}

bool TakesColours()
{
    return isatty(STDOUT_FILENO) == 1 && !IsSet("NO_COLOR") && !IsDumb();
}
}  // namespace

int main(int count, char** arguments)
{
    OccupyStandardStreams();
    std::signal(SIGPIPE, SIG_IGN);
    ConfigStoreCtl::Terminal terminal{TakesColours(), Columns(STDOUT_FILENO), {}};
    if (const std::size_t columns = Columns(STDERR_FILENO); columns != 0 && !IsDumb()) {
        terminal.progress = {STDERR_FILENO, columns};
    }
    return ConfigStoreCtl::RunProgram({arguments + (count > 0 ? 1 : 0), arguments + count}, std::cout, std::cerr,
                                      terminal);
}
