#include "ZelshConnection.h"

#include <netdb.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <stdexcept>

#include "ZELSH.h"
#include "ZelshSend.h"
#include "ZelshSocket.h"

namespace Zelsh
{
namespace
{
using Addresses = std::unique_ptr<addrinfo, decltype(&freeaddrinfo)>;

[[noreturn]] void Fail(const Endpoint& daemon, const std::string& why)
{
    throw std::runtime_error(daemon.host + ": " + why);
}

Addresses Resolve(const Endpoint& daemon)
{
    addrinfo wanted = {};
    wanted.ai_family = AF_INET;
    wanted.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    const std::string port = std::to_string(daemon.port.value_or(zelshListenPort));
    const int result = getaddrinfo(daemon.host.c_str(), port.c_str(), &wanted, &found);
    if (result != 0) {
        Fail(daemon, gai_strerror(result));
    }
    return {found, &freeaddrinfo};
}

int Connect(const addrinfo* addresses)
{
    int reason = 0;
    for (const addrinfo* address = addresses; address != nullptr; address = address->ai_next) {
        const int attempt = socket(address->ai_family, address->ai_socktype | SOCK_CLOEXEC, address->ai_protocol);
        if (attempt >= 0 && connect(attempt, address->ai_addr, address->ai_addrlen) == 0) {
            return attempt;
        }
        reason = errno;
        close(attempt);
    }
    errno = reason;
    return -1;
}
}  // namespace

Connection::Connection(const Endpoint& daemon) : daemon_(daemon), socket_(Connect(Resolve(daemon).get()))
{
    if (socket_ < 0) {
        Fail(daemon_, std::strerror(errno));
    }
    SetUpConnection(socket_);
}

Connection::~Connection()
{
    close(socket_);
}

void Connection::WarnWhenBusy()
{
    pollfd readable = {socket_, POLLIN, 0};
    if (poll(&readable, 1, 5000) == 0) {
        std::fprintf(stderr, "zelsh: %s: waiting: the daemon serves one client at a time\n", daemon_.host.c_str());
    }
}

bool Connection::IsBinary()
{
    Send("md5chk ?");  // no signature: an error, whose form tells the mode
    WarnWhenBusy();
    char first = 0;
    if (recv(socket_, &first, 1, MSG_PEEK) != 1) {
        Fail(daemon_, "the daemon closed the connection");
    }
    if (first == 1) {
        (void)ReceiveExactly(sizeof(BinaryHeader));
        return true;
    }
    return !ReceiveText([](std::string_view) {});
}

void Connection::Send(std::string_view request)
{
    if (request.size() > LARGEST_REQUEST) {
        Fail(daemon_, "a request has at most " + std::to_string(LARGEST_REQUEST) + " bytes");
    }
    if (send(socket_, request.data(), request.size(), MSG_NOSIGNAL) != static_cast<ssize_t>(request.size())) {
        Fail(daemon_, std::strerror(errno));
    }
}

void Connection::EndRequests()
{
    (void)shutdown(socket_, SHUT_WR);  // fails when the daemon has gone: reading tells
}

std::string Connection::Receive()
{
    char bytes[32768];
    const ssize_t length = recv(socket_, bytes, sizeof bytes, 0);
    if (length < 0) {
        Fail(daemon_, std::strerror(errno));
    }
    return {bytes, static_cast<std::size_t>(length)};
}

std::string Connection::ReceiveExactly(std::size_t size)
{
    std::string bytes(size, '\0');
    std::size_t filled = 0;
    while (filled < size) {
        const ssize_t length = recv(socket_, bytes.data() + filled, size - filled, 0);
        if (length < 0) {
            Fail(daemon_, std::strerror(errno));
        }
        if (length == 0 && filled == 0) {
            return "";
        }
        if (length == 0) {
            FailInReply();
        }
        filled += static_cast<std::size_t>(length);
    }
    return bytes;
}

std::string Connection::ReceiveData(std::size_t size)
{
    std::string data = ReceiveExactly(size);
    if (data.size() != size) {
        FailInReply();
    }
    return data;
}

void Connection::FailInReply() const
{
    Fail(daemon_, "the daemon closed the connection in the middle of a reply");
}
}  // namespace Zelsh
