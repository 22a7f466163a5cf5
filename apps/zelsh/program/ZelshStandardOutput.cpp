#include "ZelshStandardOutput.h"

#include <poll.h>
#include <unistd.h>
#include <cerrno>
#include <cstdio>
#include <cstring>

namespace Zelsh
{
namespace
{
/// A pipe or a connection tells even when the write that failed was an earlier one.
bool HasReader()
{
    pollfd output = {STDOUT_FILENO, POLLOUT, 0};
    return poll(&output, 1, 0) < 0 || (output.revents & (POLLERR | POLLHUP)) == 0;
}
}  // namespace

void WriteOut()
{
    errno = 0;
    if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) {
        return;
    }
    const int reason = errno;  // none when an earlier write failed and took its bytes along
    if (reason == EPIPE || !HasReader()) {
        throw ReaderGone();
    }
    throw OutputLost(std::string("standard output: ") + (reason != 0 ? std::strerror(reason) : "cannot be written"));
}
}  // namespace Zelsh
