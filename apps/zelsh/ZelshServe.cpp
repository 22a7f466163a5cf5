#include "ZelshServe.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>
#include <cerrno>
#include <cstring>

#include "ZELSH.h"
#include "ZelshPrint.h"
#include "ZelshSend.h"
#include "ZelshSocket.h"
#include "ZelshText.h"

namespace Zelsh
{
volatile std::sig_atomic_t stopping = 0;

namespace
{
/// A client that does not read for half a minute, or whose host is gone, must not keep the next one out.
void LimitPatience(int client)
{
    constexpr timeval PATIENCE = {30, 0};
    (void)setsockopt(client, SOL_SOCKET, SO_SNDTIMEO, &PATIENCE, sizeof PATIENCE);  // a connection without it works
    SetOption(client, IPPROTO_TCP, TCP_USER_TIMEOUT, 30000);
}

/// False when the connection has ended.
bool Receive(char* request)
{
    Diagnose(1, DAEMON, "Waiting for client request");
    ssize_t length = 0;
    do {
        length = recv(Client(), request, LARGEST_REQUEST, 0);
    } while (length < 0 && errno == EINTR && stopping == 0);
    if (length < 0) {
        Diagnose(0, DAEMON, "recv: %s", std::strerror(errno));
        return false;
    }
    if (length == 0) {
        Diagnose(0, DAEMON, "recv: read 0 bytes");
        return false;
    }
    request[length] = '\0';
    Diagnose(2, DAEMON, "got \"%s\"", request);
    return true;
}

void ToggleBinaryMode()
{
    options.binary = options.binary == 0 ? 1 : 0;
    Diagnose(1, DAEMON, options.binary != 0 ? "binary mode activated" : "binary mode deactivated");
}

void CheckSignature(const char* signature)
{
    if (std::strncmp(signature, ZEL_DefsMD5Sum, std::strlen(ZEL_DefsMD5Sum)) != 0) {
        ZELSHError("Client md5 signature (%s) does not match running kernel signature (%s)\n", signature,
                   ZEL_DefsMD5Sum);
    }
}

void Answer(const char* request)
{
    constexpr std::string_view CHECK = "md5chk ";
    if (std::strcmp(request, "bin") == 0) {
        ToggleBinaryMode();
    } else if (std::string_view(request).starts_with(CHECK)) {
        CheckSignature(request + CHECK.size());
    } else {
        (void)ZELSH_ParseAndExecCmd(request);  // errors have gone to the client
    }
    FlushOutput();
    if (options.binary == 0) {
        Diagnose(2, DAEMON, "Sending <EOM>");
        (void)SendOnce(REPLY_END, false);
    }
}
}  // namespace

void ServeClient(int client)
{
    static char request[LARGEST_REQUEST + 1];
    options.daemon = 1;
    shellTerminate = 0;  // what ended the last connection does not end this one
    SetClient(client);
    SetUpConnection(client);
    LimitPatience(client);
    while (shellTerminate == 0 && stopping == 0 && Receive(request)) {
        Answer(request);
    }
    Diagnose(1, DAEMON, "Client closed connection.");
    SetClient(-1);
    close(client);
}
}  // namespace Zelsh
