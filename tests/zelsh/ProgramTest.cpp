#include "ProgramTest.h"

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>
#include <cstdlib>
#include <utility>

namespace
{
constexpr int PATIENCE = 60000;  // a test that waits in vain fails

[[noreturn]] void BecomeZelsh(const std::vector<std::string>& arguments)
{
    std::vector<char*> texts = {const_cast<char*>("zelsh")};
    for (const std::string& argument : arguments) {
        texts.push_back(const_cast<char*>(argument.c_str()));
    }
    texts.push_back(nullptr);
    execv(BuiltZelsh().c_str(), texts.data());
    _exit(99);
}

int WaitFor(pid_t& program)
{
    int status = -1;
    EXPECT_EQ(waitpid(program, &status, 0), program);
    program = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}
}  // namespace

std::string BuiltZelsh()
{
    return std::string(BINARY_DIR) + "/apps/zelsh";
}

Ran RunZelsh(TestHost& host, const std::string& arguments, const std::string& input)
{
    host.WriteFile("/input", input);
    const std::string command = "\"" + BuiltZelsh() + "\" " + arguments + " <'" + host.Real("/input") + "' >'" +
                                host.Real("/output") + "' 2>'" + host.Real("/errors") + "'";
    const int status = std::system(command.c_str());
    return {WEXITSTATUS(status), host.ReadFile("/output"), host.ReadFile("/errors")};
}

Terminal::Terminal(const std::vector<std::string>& arguments, const std::string& prompt) : prompt_(prompt)
{
    program_ = forkpty(&side_, nullptr, nullptr, nullptr);
    if (program_ == 0) {
        setenv("TERM", "vt100", 1);
        setenv("HOME", "/nonexistent", 1);
        BecomeZelsh(arguments);
    }
    AwaitPrompt();
}

Terminal::~Terminal()
{
    close(side_);  // hangs up
    if (program_ > 0) {
        EXPECT_EQ(waitpid(program_, nullptr, 0), program_);
    }
}

std::string Terminal::Type(const std::string& keys, const std::string& awaited)
{
    EXPECT_EQ(write(side_, keys.data(), keys.size()), static_cast<ssize_t>(keys.size()));
    return Read(awaited);
}

void Terminal::AwaitPrompt()
{
    Read(prompt_);
    termios mode = {};
    int tries = PATIENCE;
    while (--tries > 0 && tcgetattr(side_, &mode) == 0 && (mode.c_lflag & ICANON) != 0) {
        (void)poll(nullptr, 0, 1);
    }
    EXPECT_GT(tries, 0);
}

int Terminal::Wait()
{
    Read("");
    return WaitFor(program_);
}

std::string Terminal::Read(const std::string& awaited)
{
    pollfd readable = {side_, POLLIN, 0};
    char bytes[4096];
    while (awaited.empty() || unread_.find(awaited) == std::string::npos) {
        ssize_t length = 0;
        if (poll(&readable, 1, PATIENCE) != 1 || (length = read(side_, bytes, sizeof bytes)) <= 0) {
            EXPECT_EQ(awaited, "") << "after: " << unread_;
            return std::exchange(unread_, {});
        }
        unread_.append(bytes, static_cast<std::size_t>(length));
    }
    const std::size_t end = unread_.find(awaited) + awaited.size();
    const std::string seen = unread_.substr(0, end);
    unread_.erase(0, end);
    return seen;
}

Coprocess::Coprocess(const std::vector<std::string>& arguments)
{
    int in[2];
    int out[2];
    EXPECT_EQ(pipe2(in, O_CLOEXEC), 0);
    EXPECT_EQ(pipe2(out, O_CLOEXEC), 0);
    program_ = fork();
    if (program_ == 0) {
        dup2(in[0], STDIN_FILENO);
        dup2(out[1], STDOUT_FILENO);
        BecomeZelsh(arguments);
    }
    close(in[0]);
    close(out[1]);
    input_ = in[1];
    output_ = out[0];
}

Coprocess::~Coprocess()
{
    EndInput();
    close(output_);
    if (program_ > 0) {
        EXPECT_EQ(waitpid(program_, nullptr, 0), program_);
    }
}

void Coprocess::Write(const std::string& text) const
{
    EXPECT_EQ(write(input_, text.data(), text.size()), static_cast<ssize_t>(text.size()));
}

std::string Coprocess::ReadLine() const
{
    std::string line;
    pollfd readable = {output_, POLLIN, 0};
    char byte = 0;
    while (!line.ends_with('\n') && poll(&readable, 1, PATIENCE) == 1 && read(output_, &byte, 1) == 1) {
        line += byte;
    }
    return line;
}

void Coprocess::EndInput()
{
    close(std::exchange(input_, -1));
}

int Coprocess::Wait()
{
    return WaitFor(program_);
}
