#pragma once

#include <memory>
#include <string>

#include "Json.h"
#include "ZEL.h"

/// Where a host that is not this machine keeps what its kernel would say.
inline constexpr const char* KERNEL_FACTS_FILE = "/etc/talvor/platform/kernel.json";

/// An object; null when there is none.
using KernelFacts = std::shared_ptr<const NimbConfigStore::JsonDocument>;

struct ParsedKernelFacts
{
    KernelFacts facts;
    std::string reason;  ///< why there are none
};

/// The kernel's facts. A file that is missing or no object is logged by name.
KernelFacts LoadKernelFacts();

/// The version of the interface that the kernel speaks.
int KernelInterfaceVersion();

/// True when the root of a host that is not this machine holds a copy of its kernel's /proc and /sys to read.
bool HasCapturedKernel();
