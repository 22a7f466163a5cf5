#pragma once

namespace NimbConfigStore
{
/// Raises a system alert for each error that earlier boot stages wrote to "/var/run/talvor/files/loadStoreErrors.json".
/// @throws InvalidArgumentException 1081 when the file does not parse, ConfigStoreException 1082 when a value is of the
///         wrong type, std::out_of_range when an error has more arguments than its text has places for.
void RaiseEarlierErrors();
}  // namespace NimbConfigStore
