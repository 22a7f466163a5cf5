#pragma once

#include <sys/types.h>

#include <functional>

/// A process of its own that does @p work, and ends with 1 when that gives false or throws.
pid_t StartProcess(const std::function<bool()>& work);

/// Waits for the process. True when its work was done.
bool Succeeded(pid_t process);
