#include "ZelshClient.h"

#include <unistd.h>
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <stdexcept>

#include "ZELSH.h"
#include "ZelshConnection.h"
#include "ZelshLocal.h"
#include "ZelshSend.h"
#include "ZelshText.h"

namespace Zelsh
{
namespace
{
constexpr std::string_view BLANKS = " \t\n\v\f\r";

bool IsIgnored(const std::string& line)
{
    return line.find_first_not_of(BLANKS) == std::string::npos || line[0] == '#';
}

bool IsQuit(const std::string& line)
{
    const std::size_t begin = line.find_first_not_of(BLANKS);
    const std::string word = line.substr(begin, line.find_first_of(BLANKS, begin) - begin);
    return word == "exit" || word == "quit" || word == "q";
}

bool IsSignatureCheck(const std::string& line)
{
    return line.starts_with("md5chk ");
}

/// The commands are every daemon's; its tree is not here to be asked.
std::vector<std::string> CommandCandidates(const std::string& line)
{
    const std::size_t begin = line.find_first_not_of(BLANKS);
    const bool isFirstWord = begin == std::string::npos || line.find_first_of(BLANKS, begin) == std::string::npos;
    return isFirstWord ? Candidates(line) : std::vector<std::string>();
}

/// Prints what a daemon sent: to a terminal without control characters, whatever the daemon is.
class Printer
{
public:
    void Print(std::string_view bytes)
    {
        if (isatty(STDOUT_FILENO) == 0) {
            std::fwrite(bytes.data(), 1, bytes.size(), stdout);
            return;
        }
        pending_ += bytes;
        const std::size_t end = pending_.find_last_of('\n') + 1;  // lines are escaped as a whole
        std::fputs(EscapeMessage(std::string_view(pending_).substr(0, end)).c_str(), stdout);
        pending_.erase(0, end);
    }

    ~Printer() { std::fputs(EscapeMessage(pending_).c_str(), stdout); }
    Printer() = default;
    Printer(const Printer&) = delete;
    Printer& operator=(const Printer&) = delete;

private:
    std::string pending_;
};

/// What both clients have in common.
class Client : public LineRunner
{
public:
    explicit Client(Endpoint daemon) : daemon_(std::move(daemon)) {}
    bool IsOver() const override { return over_ || std::ferror(stdout) != 0; }
    PromptSource Prompt() const override
    {
        return [] { return "zelsh> "; };
    }
    Completer LineCompleter() const override { return CommandCandidates; }

    int Run(const std::string& text) override
    {
        const std::string line = text.substr(0, text.find('\0'));  // a NUL byte ends a line here as it does there
        if (IsIgnored(line)) {
            return 0;
        }
        if (line == "bin") {
            throw std::runtime_error("bin: --binary chooses the mode");
        }
        over_ = IsQuit(line);
        return RunRequest(line);
    }

protected:
    virtual int RunRequest(const std::string& line) = 0;
    const Endpoint& Daemon() const { return daemon_; }
    bool IsQuitting() const { return over_; }

private:
    Endpoint daemon_;
    bool over_ = false;
};

/// Looks at the last line of a reply, where the shell reports that a command failed.
class StatusReader
{
public:
    void Read(std::string_view bytes)
    {
        hasRead_ |= !bytes.empty();
        for (const char byte : bytes) {
            if (ended_) {
                line_.clear();
            }
            ended_ = byte == '\n';
            if (!ended_ && line_.size() < 64) {
                line_ += byte;
            }
        }
    }

    bool HasRead() const { return hasRead_; }

    int Status() const { return line_ == "Command not found." ? 1 : line_.starts_with("Error in command ") ? 2 : 0; }

private:
    std::string line_;
    bool ended_ = false;
    bool hasRead_ = false;
};

/// One connection for all lines.
class TextClient final : public Client
{
public:
    explicit TextClient(const Endpoint& daemon) : Client(daemon), connection_(daemon)
    {
        if (connection_.IsBinary()) {
            connection_.Send("bin");
            (void)connection_.ReceiveText([](std::string_view) {});
        }
    }

protected:
    int RunRequest(const std::string& line) override
    {
        Printer printer;
        StatusReader status;
        connection_.Send(line);
        const bool complete = connection_.ReceiveText([&](std::string_view bytes) {
            printer.Print(bytes);
            status.Read(bytes);
        });
        if (!complete && !IsQuitting()) {
            throw std::runtime_error(Daemon().host + ": the daemon closed the connection");
        }
        return IsSignatureCheck(line) && status.HasRead() ? 2 : status.Status();  // a match is not answered
    }

private:
    Connection connection_;
};

/// A connection for each line: a reply of binary mode has no end but the connection's.
class BinaryClient final : public Client
{
public:
    explicit BinaryClient(const Endpoint& daemon) : Client(daemon) { EnterBinaryMode(); }
    ~BinaryClient() override { LeaveBinaryMode(); }
    BinaryClient(const BinaryClient&) = delete;
    BinaryClient& operator=(const BinaryClient&) = delete;

protected:
    int RunRequest(const std::string& line) override;

private:
    void EnterBinaryMode();
    void LeaveBinaryMode() noexcept;

    bool entered_ = false;
};

/// Activation is not answered; the end of the connection says that it was done.
void BinaryClient::EnterBinaryMode()
{
    Connection connection(Daemon());
    if (!connection.IsBinary()) {
        connection.Send("bin");
        connection.EndRequests();
        (void)connection.Receive();
        entered_ = true;
    }
}

/// Leaves the daemon as it was found.
void BinaryClient::LeaveBinaryMode() noexcept
{
    if (!entered_) {
        return;
    }
    try {
        Connection connection(Daemon());
        if (connection.IsBinary()) {
            connection.Send("bin");
            (void)connection.ReceiveText([](std::string_view) {});
        }
    } catch (const std::exception&) {
        // A daemon that has gone has no mode.
    }
}

int BinaryClient::RunRequest(const std::string& line)
{
    Connection connection(Daemon());
    if (!connection.IsBinary()) {
        throw std::runtime_error(Daemon().host + ": another client has ended binary mode");
    }
    connection.Send(line);
    connection.EndRequests();
    Printer printer;
    bool failed = false;
    for (std::string head = connection.ReceiveExactly(sizeof(BinaryHeader)); !head.empty();
         head = connection.ReceiveExactly(sizeof(BinaryHeader))) {
        BinaryHeader header = {};
        std::memcpy(&header, head.data(), sizeof header);
        failed |= header.kind != 0;
        printer.Print(connection.ReceiveData(header.length));
    }
    if (failed) {
        std::fflush(stdout);
        std::fprintf(stderr, "zelsh: the daemon reports an error; in text mode it says which\n");
    }
    return failed ? 2 : 0;
}
}  // namespace

std::unique_ptr<LineRunner> ConnectToDaemon(const Endpoint& daemon, bool binary)
{
    if (binary) {
        return std::make_unique<BinaryClient>(daemon);
    }
    return std::make_unique<TextClient>(daemon);
}
}  // namespace Zelsh
