#include "ZelshLines.h"

#include <unistd.h>
#include <cerrno>
#include <clocale>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iostream>
#include <stdexcept>

#include "ZelshStandardOutput.h"

namespace Zelsh
{
namespace
{
/// Whoever gives the lines may wait for what one printed before giving the next.
int RunAndWriteOut(LineRunner& runner, const std::string& line)
{
    const int status = runner.Run(line);
    WriteOut();
    return status;
}

int RunStream(std::istream& stream, const std::string& name, LineRunner& runner)
{
    int status = 0;
    std::string line;
    while (!runner.IsOver() && std::getline(stream, line)) {
        status = RunAndWriteOut(runner, line);
    }
    if (stream.bad()) {
        throw std::runtime_error(name + ": cannot be read");
    }
    return status;
}

int RunFile(const std::string& path, LineRunner& runner)
{
    errno = 0;
    std::ifstream file(path);
    if (!file || file.peek() == std::ifstream::traits_type::eof()) {
        if (errno != 0) {
            throw std::runtime_error(path + ": " + std::strerror(errno));
        }
        return 0;
    }
    return RunStream(file, path, runner);
}

int RunTerminal(LineRunner& runner)
{
    std::setlocale(LC_CTYPE, "");  // for the widths of what is typed
    LineEditor editor(runner.Prompt(), runner.LineCompleter());
    int status = 0;
    while (!runner.IsOver()) {
        const std::optional<std::string> line = editor.Read();
        if (!line) {
            std::fputc('\n', stdout);
            break;
        }
        status = RunAndWriteOut(runner, *line);
    }
    return status;
}
}  // namespace

int RunLines(const ProgramCall& call, LineRunner& runner)
{
    if (call.line) {
        return runner.Run(*call.line);
    }
    if (call.file) {
        return RunFile(*call.file, runner);
    }
    const bool isTerminal = isatty(STDIN_FILENO) == 1 && isatty(STDOUT_FILENO) == 1;
    return isTerminal ? RunTerminal(runner) : RunStream(std::cin, "standard input", runner);
}
}  // namespace Zelsh
