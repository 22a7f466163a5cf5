#pragma once

#include "Json.h"
#include "ZEL.h"

/// Where a host that is not this machine keeps what its kernel would say.
inline constexpr const char* KERNEL_FACTS_FILE = "/etc/talvor/platform/kernel.json";

/// Reads the kernel's facts. A file that is missing or no object is logged by name.
ORV_ReturnStatus LoadKernelFacts(NimbConfigStore::JsonDocument& facts);

/// The version of the interface that the kernel speaks.
int KernelInterfaceVersion();
