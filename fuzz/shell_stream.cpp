#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <thread>

#include "FuzzHost.h"
#include "ZelshServe.h"

namespace
{
/// Sends @p stream, cut where it holds 0xff, and reads everything that comes back.
void Talk(int socket, const std::string& stream)
{
    for (std::size_t begin = 0; begin < stream.size();) {
        const std::size_t end = std::min(stream.find('\xff', begin), stream.size());
        (void)send(socket, stream.data() + begin, end - begin, MSG_NOSIGNAL);
        begin = end + 1;
    }
    shutdown(socket, SHUT_WR);
    char bytes[4096];
    while (recv(socket, bytes, sizeof bytes, 0) > 0) {
    }
    close(socket);
}
}  // namespace

/// Requests as a socket of messages delivers them: each is what one receive of the daemon returns.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FuzzHost();
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_SEQPACKET, 0, ends) != 0) {
        std::abort();
    }
    options.verbosity = -1;
    std::thread client(Talk, ends[0],
                       std::string(reinterpret_cast<const char*>(data), std::min<std::size_t>(size, 1 << 16)));
    Zelsh::ServeClient(ends[1]);
    client.join();
    options = {0, 0, 0, 1, zelshDefaultOutputPtr};
    return 0;
}
