#pragma once

#include <sys/types.h>
#include <string>
#include <vector>

#include "TestHost.h"

/// Where the built program is.
std::string BuiltZelsh();

struct Ran
{
    int status;
    std::string output;
    std::string errors;
};

/// Runs the program with @p arguments, written as for a system shell, on @p input.
Ran RunZelsh(TestHost& host, const std::string& arguments, const std::string& input = "");

/// The program at a terminal, as a person sits at it.
class Terminal
{
public:
    /// Starts it, and reads its first prompt.
    Terminal(const std::vector<std::string>& arguments, const std::string& prompt);
    ~Terminal();
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    /// Types, and reads until @p awaited is seen.
    std::string Type(const std::string& keys, const std::string& awaited);

    /// Reads the next prompt and lets the program take the terminal over: until then Ctrl-C and Ctrl-D are the
    /// terminal's own.
    void AwaitPrompt();

    /// Waits for the program's end. @return its exit status, -1 when a signal ended it.
    int Wait();

private:
    /// Takes what the program wrote up to the end of @p awaited; all of it when that is empty.
    std::string Read(const std::string& awaited);

    std::string prompt_;
    std::string unread_;
    int side_ = -1;
    pid_t program_ = -1;
};

/// The program between two pipes, as another program drives it.
class Coprocess
{
public:
    explicit Coprocess(const std::vector<std::string>& arguments);
    ~Coprocess();
    Coprocess(const Coprocess&) = delete;
    Coprocess& operator=(const Coprocess&) = delete;

    void Write(const std::string& text) const;

    /// Reads to the end of a line; what came until then when nothing more comes.
    std::string ReadLine() const;

    void EndInput();
    int Wait();

private:
    int input_ = -1;
    int output_ = -1;
    pid_t program_ = -1;
};
