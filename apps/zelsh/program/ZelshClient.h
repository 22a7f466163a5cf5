#pragma once

#include <memory>

#include "ZelshLines.h"

namespace Zelsh
{
/// Runs lines on a daemon. In text mode a line's status follows from how its reply ends; in binary mode an error has no
/// text. @throws std::runtime_error when the daemon cannot be reached, like each of its calls.
std::unique_ptr<LineRunner> ConnectToDaemon(const Endpoint& daemon, bool binary);
}  // namespace Zelsh
