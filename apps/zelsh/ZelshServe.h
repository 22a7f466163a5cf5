#pragma once

#include <csignal>

namespace Zelsh
{
/// What the daemon's diagnostics begin with.
inline constexpr const char* DAEMON = "ZELSHDaemon";

/// Not 0: no more requests are taken. A signal handler sets it, and shuts the connection down.
extern volatile std::sig_atomic_t stopping;

/// Serves one connected client until it goes or quits, and closes the connection.
void ServeClient(int client);
}  // namespace Zelsh
