#pragma once

#include <string>

namespace ConfigStoreCtl
{
/// The list of every command with its arguments and options, as it stands in the manual page: mdoc source.
std::string ManualOfCommands();
}  // namespace ConfigStoreCtl
