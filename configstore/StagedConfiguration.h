#pragma once

namespace NimbConfigStore
{
/// Applies what was staged for this boot, as one transaction, and records in "BOOT_INFO" whether the desired
/// document was applied. A failed apply leaves the rows as they were, is logged and raised as an event.
/// @throws what GetBootMode and GetDBConnection throw.
void ApplyStagedConfiguration();
}  // namespace NimbConfigStore
