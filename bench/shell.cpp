#include <arpa/inet.h>
#include <benchmark/benchmark.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <string>
#include <vector>

#include "ZELSH.h"
#include "ZelshServe.h"

// Requests to the shell's daemon over loopback, in turns with requests to a bare echo server; and a walk of the whole
// live tree.
namespace
{
using Clock = std::chrono::steady_clock;

constexpr int REQUESTS = 2000;
constexpr std::string_view REQUEST = "get /system/bootCmdLine";

int Accept(int listener)
{
    const int client = accept(listener, nullptr, nullptr);
    const int on = 1;
    setsockopt(client, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    return client;
}

void Echo(int client)
{
    char bytes[4096];
    for (ssize_t length; (length = recv(client, bytes, sizeof bytes, 0)) > 0;) {
        if (send(client, bytes, static_cast<std::size_t>(length), MSG_NOSIGNAL) < 0) {
            break;
        }
    }
}

void ServeShell(int client)
{
    options.verbosity = -1;
    ZELSH_Init();
    Zelsh::ServeClient(client);
}

/// A server of one client in a process of its own, and a connection to it.
class Server
{
public:
    explicit Server(void (*serve)(int client))
    {
        const int listener = socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        bind(listener, reinterpret_cast<const sockaddr*>(&address), size);
        listen(listener, 1);
        getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size);
        process_ = fork();
        if (process_ == 0) {
            serve(Accept(listener));
            _exit(0);
        }
        close(listener);
        connection_ = socket(AF_INET, SOCK_STREAM, 0);
        const int on = 1;
        setsockopt(connection_, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
        if (connect(connection_, reinterpret_cast<const sockaddr*>(&address), size) != 0) {
            std::perror("connect");
            std::exit(1);
        }
    }
    ~Server()
    {
        close(connection_);
        waitpid(process_, nullptr, 0);
    }
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    /// Microseconds from the request to the last byte of an answer that ends with @p end.
    double Ask(std::string_view end) const
    {
        const auto start = Clock::now();
        send(connection_, REQUEST.data(), REQUEST.size(), MSG_NOSIGNAL);
        char bytes[8192];
        std::size_t filled = 0;
        do {
            const ssize_t length = recv(connection_, bytes + filled, sizeof bytes - filled, 0);
            if (length <= 0) {
                std::perror("recv");
                std::exit(1);
            }
            filled += static_cast<std::size_t>(length);
        } while (!std::string_view(bytes, filled).ends_with(end));
        return std::chrono::duration<double, std::micro>(Clock::now() - start).count();
    }

private:
    int connection_ = -1;
    pid_t process_ = -1;
};

struct Figures
{
    double perSecond;
    double percentile99;
};

Figures Summary(std::vector<double> microseconds)
{
    double total = 0;
    for (const double one : microseconds) {
        total += one;
    }
    std::sort(microseconds.begin(), microseconds.end());
    return {1e6 * static_cast<double>(microseconds.size()) / total, microseconds[microseconds.size() * 99 / 100]};
}

std::vector<double> echoTimes;
std::vector<double> shellTimes;

void Requests(benchmark::State& state)
{
    const Server echo(Echo);
    const Server shell(ServeShell);
    for ([[maybe_unused]] auto iteration : state) {
        // In turns, so that what else runs on the machine slows both.
        const std::size_t before = shellTimes.size();
        for (int i = 0; i < REQUESTS; ++i) {
            echoTimes.push_back(echo.Ask(REQUEST));
            shellTimes.push_back(shell.Ask("<EOM>"));
        }
        const Figures last = Summary({shellTimes.begin() + static_cast<std::ptrdiff_t>(before), shellTimes.end()});
        state.SetIterationTime(REQUESTS / last.perSecond);
    }
    state.counters["requests/s"] = Summary(shellTimes).perSecond;
}

/// Output to nowhere: the tree is timed, not the terminal.
void Walk(benchmark::State& state)
{
    if (std::freopen("/dev/null", "w", stdout) == nullptr) {
        state.SkipWithError("no /dev/null");
    }
    ZELSH_Init();
    for ([[maybe_unused]] auto iteration : state) {
        benchmark::DoNotOptimize(ZELSH_ParseAndExecCmd("get /"));
    }
}

void PrintSummary()
{
    const Figures echo = Summary(echoTimes);
    const Figures shell = Summary(shellTimes);
    std::fprintf(stderr, "\n%-12s %12s %16s\n", "server", "requests/s", "99th percentile");
    std::fprintf(stderr, "%-12s %12.0f %13.1f us\n", "echo", echo.perSecond, echo.percentile99);
    std::fprintf(stderr, "%-12s %12.0f %13.1f us\n", "shell, get", shell.perSecond, shell.percentile99);
    std::fprintf(stderr, "ratio of the rates: %.2f\n", shell.perSecond / echo.perSecond);
}
}  // namespace

int main(int argc, char** argv)
{
    benchmark::RegisterBenchmark("Requests", Requests)->Iterations(10)->UseManualTime()->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("Walk", Walk)->Unit(benchmark::kMillisecond);
    benchmark::Initialize(&argc, argv);
    benchmark::ConsoleReporter reporter;
    reporter.SetOutputStream(&std::cerr);  // the walk gives standard output away
    benchmark::RunSpecifiedBenchmarks(&reporter);
    if (!shellTimes.empty()) {
        PrintSummary();
    }
    return 0;
}
