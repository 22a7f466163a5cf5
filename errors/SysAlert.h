#pragma once

#include <string>

namespace NimbConfigStore
{
/// Raises a system alert; of a text of more than 2047 characters only the first 2048 are sent. Never throws: a failure
/// is logged.
void SetLSSysAlert(std::string text);
}  // namespace NimbConfigStore
