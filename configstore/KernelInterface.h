#pragma once

#include <cstddef>
#include <string>

#include "ZEL.h"

namespace NimbConfigStore
{
/// Makes sure, once per process, that this build and the kernel agree about the kernel information interface.
/// @throws ConfigStoreException 2000 "Failed to invoke ZEL_CheckSig"
void EnsureKernelInterface();

/// A text node of at most @p size bytes, the NUL included.
/// @throws ConfigStoreException 2000 with the text @p failure when it cannot be read.
std::string ReadKernelText(ZEL_NodeID node, std::size_t size, const char* failure);
}  // namespace NimbConfigStore
