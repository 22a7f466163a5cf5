#pragma once

#include <sys/types.h>
#include <cstddef>
#include <cstdint>
#include <string_view>

// The daemon's side of a connection.
namespace Zelsh
{
/// The header of binary mode, in the host's byte order.
struct BinaryHeader
{
    std::uint8_t kind;  ///< 0 data, 1 error
    std::uint8_t zero;
    std::uint16_t length;  ///< of the data behind it
    std::uint32_t zeros;
    std::int64_t seconds;
    std::int64_t microseconds;
};
static_assert(sizeof(BinaryHeader) == 24);

/// What one receive takes at most: a longer request would be cut.
constexpr std::size_t LARGEST_REQUEST = 4096;

/// From now on output goes to @p client; -1: to nobody.
void SetClient(int client);

/// The client of this moment, for a signal handler.
int Client();

/// Collects output, and sends it whenever the buffer is full.
void SendOutput(std::string_view text);

/// Sends what has been collected.
void FlushOutput();

/// Sends all of @p data with one call. A client that took less could not tell where the next reply begins: a short
/// count counts as a failure. @return what the socket accepted, or -1; a failure is printed and sets shellTerminate,
/// and nothing goes to that client any more: a reply that was cut must not seem to have ended.
/// @param more  the reply goes on: what is sent may wait for that, and share its packet.
ssize_t SendOnce(std::string_view data, bool more);
}  // namespace Zelsh
