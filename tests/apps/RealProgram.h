#pragma once

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

inline const std::string PROGRAM = std::string(BINARY_DIR) + "/apps/configstorectl";

/// What a finished process exits with; 1000 and the signal when one ended it.
inline int StatusOf(pid_t process)
{
    int status = 0;
    EXPECT_EQ(waitpid(process, &status, 0), process);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
}

/// A terminal of a given width: programs write to one end, the test reads what they show from the other.
class PseudoTerminal
{
public:
    explicit PseudoTerminal(unsigned short columns)
    {
        winsize size{24, columns, 0, 0};
        EXPECT_EQ(openpty(&master_, &slave_, nullptr, nullptr, &size), 0);
        fcntl(master_, F_SETFD, FD_CLOEXEC);
        fcntl(slave_, F_SETFD, FD_CLOEXEC);
    }
    ~PseudoTerminal()
    {
        close(master_);
        CloseWriter();
    }
    PseudoTerminal(const PseudoTerminal&) = delete;
    PseudoTerminal& operator=(const PseudoTerminal&) = delete;

    int Writer() const { return slave_; }
    void CloseWriter()
    {
        if (slave_ != -1) {
            close(std::exchange(slave_, -1));
        }
    }

    /// Waits for more; empty when no writer is left, or nothing comes.
    std::string Read() const
    {
        pollfd wait{master_, POLLIN, 0};
        EXPECT_EQ(poll(&wait, 1, 60'000), 1) << "nothing was written to the terminal";
        std::array<char, 4096> bytes{};
        const ssize_t count = read(master_, bytes.data(), bytes.size());
        return {bytes.data(), count > 0 ? static_cast<std::size_t>(count) : 0};
    }

    /// Everything until no writer is left.
    std::string ReadAll() const
    {
        std::string all;
        for (std::string more = Read(); !more.empty(); more = Read()) {
            all += more;
        }
        return all;
    }

private:
    int master_ = -1;
    int slave_ = -1;
};

/// Starts the program with the given standard output and standard error; -1 leaves the test's own.
inline pid_t StartProgram(const std::vector<std::string>& arguments, int output, int errors,
                          const std::vector<std::string>& environment)
{
    std::vector<std::string> words = arguments;
    words.insert(words.begin(), PROGRAM);
    std::vector<char*> argv;
    for (std::string& word : words) {
        argv.push_back(word.data());
    }
    argv.push_back(nullptr);
    std::vector<std::string> variables = environment;
    std::vector<char*> envp;
    for (std::string& variable : variables) {
        envp.push_back(variable.data());
    }
    envp.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    if (output != -1) {
        posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    }
    if (errors != -1) {
        posix_spawn_file_actions_adddup2(&actions, errors, STDERR_FILENO);
    }
    pid_t process = -1;
    EXPECT_EQ(posix_spawn(&process, argv[0], &actions, nullptr, argv.data(), envp.data()), 0);
    posix_spawn_file_actions_destroy(&actions);
    return process;
}
