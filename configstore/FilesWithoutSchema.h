#pragma once

namespace NimbConfigStore
{
/// Removes the files of "/var/run/nonSchemaFiles" that no schema declares. Failures are logged.
void RemoveFilesWithoutSchema();
}  // namespace NimbConfigStore
