#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "ZELSH.h"
#include "ZelshPrint.h"
#include "ZelshSend.h"
#include "ZelshServe.h"
#include "ZelshSocket.h"

constinit int shellTerminate = 0;
constinit const char* zelshListenAddress = "0.0.0.0";
constinit std::uint16_t zelshListenPort = 56303;

namespace Zelsh
{
namespace
{
volatile std::sig_atomic_t listener = -1;

/// Shut down rather than flagged alone: a call that is about to wait returns too.
void Stop(int)
{
    const int reason = errno;
    stopping = 1;
    shutdown(listener, SHUT_RDWR);
    shutdown(Client(), SHUT_RDWR);
    errno = reason;
}

void HandleSignals()
{
    struct sigaction stop = {};
    stop.sa_handler = Stop;
    sigaction(SIGTERM, &stop, nullptr);
    sigaction(SIGINT, &stop, nullptr);
    std::signal(SIGPIPE, SIG_IGN);
}

[[noreturn]] void Fail(const char* call)
{
    Diagnose(0, DAEMON, "%s: %s", call, std::strerror(errno));
    std::exit(EXIT_FAILURE);
}

/// Whoever started the daemon may wait for the end of its output. Errors go where they went.
void LeaveStandardStreams()
{
    const int nowhere = open("/dev/null", O_RDWR | O_CLOEXEC);
    if (nowhere >= 0) {
        dup2(nowhere, STDIN_FILENO);
        dup2(nowhere, STDOUT_FILENO);
        close(nowhere);
    }
}

void Detach()
{
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child < 0) {
        Fail("ZELSH: fork");
    }
    if (child > 0) {
        _exit(EXIT_SUCCESS);  // what is to be done at exit is the daemon's to do
    }
    Diagnose(0, DAEMON, "ZELSH Daemon started");
    if (setsid() < 0) {
        Fail("ZELSH: setsid");
    }
    LeaveStandardStreams();
}

void Listen()
{
    listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (listener < 0) {
        Fail("socket");
    }
    SetOption(listener, SOL_SOCKET, SO_REUSEADDR, 1);  // a restart does not wait for the last client's port
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(zelshListenPort);
    if (inet_pton(AF_INET, zelshListenAddress, &address.sin_addr) != 1) {
        errno = EINVAL;
        Fail("bind");
    }
    if (bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        Fail("bind");
    }
    if (listen(listener, 1) != 0) {
        Fail("listen");
    }
}

/// Failures of one connection, or of a moment.
bool IsPassing(int reason)
{
    switch (reason) {
        case EINTR:
        case ECONNABORTED:
        case EPROTO:
        case EPERM:
        case ENETDOWN:
        case ENETUNREACH:
        case EHOSTDOWN:
        case EHOSTUNREACH:
        case ENONET:
        case ENOPROTOOPT:
        case EOPNOTSUPP:
            return true;
        default:
            return false;
    }
}

/// -1 when there are to be no more clients.
int Accept(sockaddr_in& peer)
{
    while (stopping == 0) {
        Diagnose(2, DAEMON, "Waiting for client connection");
        socklen_t size = sizeof peer;
        const int client = accept4(listener, reinterpret_cast<sockaddr*>(&peer), &size, SOCK_CLOEXEC);
        if (client >= 0) {
            return client;
        }
        const int reason = errno;
        if (stopping != 0) {
            break;
        }
        Diagnose(0, DAEMON, "accept: %s", std::strerror(reason));
        if (!IsPassing(reason)) {
            std::exit(EXIT_FAILURE);
        }
    }
    return -1;
}
}  // namespace
}  // namespace Zelsh

void ZELSHDaemon()
{
    using namespace Zelsh;
    Detach();
    HandleSignals();
    Listen();
    sockaddr_in peer = {};
    for (int client = Accept(peer); client >= 0; client = Accept(peer)) {
        char address[INET_ADDRSTRLEN] = {};
        inet_ntop(AF_INET, &peer.sin_addr, address, sizeof address);
        Diagnose(1, DAEMON, "Established connection with client %s", address);
        ServeClient(client);
    }
    close(listener);
    std::exit(EXIT_SUCCESS);
}
