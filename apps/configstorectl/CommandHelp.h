#pragma once

#include <string>

#include "CommandTable.h"

namespace ConfigStoreCtl
{
/// How a command is called, without the program's name: "files track backup FILE...".
std::string Usage(const Command& command);

/// Help on the command with this path, on every command below it when it is a group, on all when it is empty.
std::string HelpText(const std::string& path);
}  // namespace ConfigStoreCtl
