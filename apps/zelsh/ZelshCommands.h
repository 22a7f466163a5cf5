#pragma once

#include <cstddef>

#include "ZELSH.h"

namespace Zelsh
{
/// What a command was called with: its name first, as typed, quotes and escapes included.
struct Call
{
    int count;
    char* const* arguments;
    bool typeLevel;  ///< of the command's row
};

/// The path that stands behind a command's name.
enum class Operand
{
    NONE,
    BRANCH,
    NODE,  ///< any node
};

/// One command. Lookup, help and completion are made from this row alone.
struct Command
{
    const char* name;
    const char* help;
    ORV_ReturnStatus (*handler)(const Call& call);
    Operand operand;
    bool typeLevel = false;
};

/// The command at @p index in the order of "help"; null past the last.
const Command* CommandAt(std::size_t index);

/// Null for a name that no command has.
const Command* FindCommand(const char* name);

ORV_ReturnStatus ChangeDirectory(const Call& call);
ORV_ReturnStatus PrintDirectory(const Call& call);
ORV_ReturnStatus ListNodes(const Call& call);
ORV_ReturnStatus Get(const Call& call);
ORV_ReturnStatus Set(const Call& call);
ORV_ReturnStatus DescribeType(const Call& call);
}  // namespace Zelsh
