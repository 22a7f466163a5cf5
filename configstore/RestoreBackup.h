#pragma once

namespace NimbConfigStore
{
/// Replaces the stores by their backups and creates what is then missing. Failures are log lines and events.
/// @param restore  false: does nothing at all.
/// @return 1 when the config store had to be created anew (boot mode 2 is then set), else 0.
int RestoreFromBackup(bool restore);
}  // namespace NimbConfigStore
