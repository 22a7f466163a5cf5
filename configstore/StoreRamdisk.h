#pragma once

#include <string>

namespace NimbConfigStore
{
/// Sets the usage limits of a ramdisk of the store: it warns at 80 percent and fails at 90.
/// @throws ConfigStoreException 2000, after it was logged.
void SetupStoreRamdiskUsageLimits(const std::string& ramdisk);
}  // namespace NimbConfigStore
