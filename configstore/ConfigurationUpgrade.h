#pragma once

namespace NimbConfigStore
{
/// After a software upgrade: runs the upgrade modules, then removes rows that no schema describes any more. Failures
/// are logged and raised as events.
void UpgradeConfiguration();
}  // namespace NimbConfigStore
