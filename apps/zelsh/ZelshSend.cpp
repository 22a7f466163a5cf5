#include "ZelshSend.h"

#include <sys/socket.h>
#include <sys/time.h>
#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <new>
#include <string>

#include "ZELSH.h"
#include "ZelshPrint.h"
#include "ZelshText.h"

namespace Zelsh
{
namespace
{
constexpr std::size_t LARGEST_PIECE = UINT16_MAX;

volatile std::sig_atomic_t client = -1;
bool broken = false;  // unlike shellTerminate, which "exit" sets too: its reply still ends with the marker

char output[32768];
std::size_t outputLength = 0;

/// An error stands alone; data follows its header.
ssize_t SendHeader(bool error, std::size_t length)
{
    timeval now = {};
    gettimeofday(&now, nullptr);
    const BinaryHeader header = {error, 0, static_cast<std::uint16_t>(length), 0, now.tv_sec, now.tv_usec};
    return SendOnce({reinterpret_cast<const char*>(&header), sizeof header}, !error);
}

ssize_t SendPiece(std::string_view piece)
{
    Diagnose(2, "ZELSHSendData", "sending binary header");
    Diagnose(2, "ZELSHSendData", "sending %d bytes of data in binary mode", static_cast<int>(piece.size()));
    const ssize_t sent = SendHeader(false, piece.size());
    return sent < 0 ? sent : SendOnce(piece, false);
}

/// A failed piece is the last: what was accepted before it does not help the client.
ssize_t SendPieces(std::string_view data)
{
    ssize_t accepted = 0;
    do {
        const std::string_view piece = data.substr(0, LARGEST_PIECE);
        const ssize_t sent = SendPiece(piece);
        if (sent < 0) {
            return sent;
        }
        accepted += sent;
        data.remove_prefix(piece.size());
    } while (!data.empty() && !broken);
    return accepted;
}

void SendErrorText(const char* text)
{
    try {
        (void)SendOnce(EscapeMessage(text), true);
    } catch (const std::bad_alloc&) {
        (void)SendOnce("Out of memory", true);
    }
}
}  // namespace

void SetClient(int socket)
{
    client = socket;
    broken = false;
    outputLength = 0;
}

int Client()
{
    return client;
}

void SendOutput(std::string_view text)
{
    if (broken) {
        return;
    }
    if (outputLength + text.size() > sizeof output) {
        FlushOutput();
    }
    if (text.size() > sizeof output) {
        (void)ZELSHSendData(text.data(), text.size());  // a failure has set shellTerminate
        return;
    }
    std::memcpy(output + outputLength, text.data(), text.size());
    outputLength += text.size();
}

void FlushOutput()
{
    const std::size_t length = outputLength;
    outputLength = 0;
    if (length != 0 && !broken) {
        (void)ZELSHSendData(output, length);
    }
}

ssize_t SendOnce(std::string_view data, bool more)
{
    if (broken) {
        return -1;
    }
    ssize_t sent = 0;
    do {
        sent = send(client, data.data(), data.size(), MSG_NOSIGNAL | (more ? MSG_MORE : 0));
    } while (sent < 0 && errno == EINTR);
    if (sent == static_cast<ssize_t>(data.size())) {
        return sent;
    }
    const int reason = sent < 0 ? errno : ETIMEDOUT;
    Diagnose(0, "ZELSHSend", "send: %s", std::strerror(reason));
    broken = true;
    shellTerminate = 1;
    return sent;
}
}  // namespace Zelsh

ssize_t ZELSHSendData(const void* buffer, std::size_t length)
{
    const std::string_view data(static_cast<const char*>(buffer), length);
    if (options.binary != 0) {
        return Zelsh::SendPieces(data);
    }
    Zelsh::Diagnose(2, "ZELSHSendData", "Sending %d bytes of data in text mode", static_cast<int>(length));
    return Zelsh::SendOnce(data, true);  // the marker ends every reply of text mode
}

void ZELSHSendError(const char* format, va_list arguments)
{
    static char text[4096];
    Zelsh::FlushOutput();
    if (options.binary != 0) {
        Zelsh::Diagnose(2, "ZELSHSendError", "Sending binary error");
        (void)Zelsh::SendHeader(true, 0);
        return;
    }
    std::vsnprintf(text, sizeof text, format, arguments);
    Zelsh::Diagnose(2, "ZELSHSendError", "Sending text error");
    Zelsh::SendErrorText(text);
    ZELSHPrintf("\n");
}
