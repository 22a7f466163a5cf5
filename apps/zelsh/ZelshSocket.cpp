#include "ZelshSocket.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

namespace Zelsh
{
void SetOption(int socket, int level, int option, int value)
{
    (void)setsockopt(socket, level, option, &value, sizeof value);  // a connection without it still works
}

void SetUpConnection(int socket)
{
    SetOption(socket, SOL_SOCKET, SO_KEEPALIVE, 1);
    SetOption(socket, IPPROTO_TCP, TCP_KEEPIDLE, 30);
    SetOption(socket, IPPROTO_TCP, TCP_KEEPINTVL, 10);
    SetOption(socket, IPPROTO_TCP, TCP_KEEPCNT, 3);
    SetOption(socket, IPPROTO_TCP, TCP_NODELAY, 1);
}
}  // namespace Zelsh
