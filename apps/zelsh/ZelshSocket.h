#pragma once

// What both ends of a connection do to their sockets. None of it is needed for a connection that works.
namespace Zelsh
{
void SetOption(int socket, int level, int option, int value);

/// Whoever waits for a peer whose host has gone learns of it within a minute (what was sent and never arrived is given
/// up when the system no longer repeats it), and no request or reply waits for the acknowledgement of its first half.
void SetUpConnection(int socket);
}  // namespace Zelsh
