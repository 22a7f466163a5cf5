#pragma once

#include <string>
#include <string_view>

#include "ZelshCall.h"
#include "ZelshText.h"

namespace Zelsh
{
/// A connection to a daemon. Failures are std::runtime_error.
class Connection
{
public:
    explicit Connection(const Endpoint& daemon);
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    /// Asks in which mode the daemon is: it keeps it from one client to the next. Warns when the answer takes long,
    /// because the daemon is busy with another client.
    bool IsBinary();

    void Send(std::string_view request);

    /// No more requests: the daemon answers what it has, and closes the connection.
    void EndRequests();

    /// The next bytes, at least one; empty when the connection was closed.
    std::string Receive();

    /// Exactly @p size bytes, or none when the connection was closed before the first.
    std::string ReceiveExactly(std::size_t size);

    /// The data behind a header: all of its @p size bytes.
    std::string ReceiveData(std::size_t size);

    /// Reads a reply of text mode. Hands on what stands before the marker, in pieces. False when the connection was
    /// closed without a marker.
    template <typename Consumer>
    bool ReceiveText(Consumer consume);

private:
    void WarnWhenBusy();
    [[noreturn]] void FailInReply() const;

    Endpoint daemon_;
    int socket_ = -1;
};

template <typename Consumer>
bool Connection::ReceiveText(Consumer consume)
{
    std::string held;
    for (std::string bytes = Receive(); !bytes.empty(); bytes = Receive()) {
        held += bytes;
        if (held.ends_with(REPLY_END)) {
            consume(std::string_view(held).substr(0, held.size() - REPLY_END.size()));
            return true;
        }
        // The end may be the beginning of the marker.
        const std::size_t safe = held.size() - std::min(held.size(), REPLY_END.size() - 1);
        consume(std::string_view(held).substr(0, safe));
        held.erase(0, safe);
    }
    consume(held);
    return false;
}
}  // namespace Zelsh
