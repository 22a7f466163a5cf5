#pragma once

#include <map>
#include <string>
#include <vector>

#include "Output.h"

namespace ConfigStoreCtl
{
/// What the call gave, checked against the command's row.
struct Arguments
{
    std::vector<std::string> values;                          ///< positional, in order; optional ones may be missing
    std::map<std::string, std::vector<std::string>> options;  ///< by name; a flag that was given has an empty list

    bool Has(const std::string& option) const { return options.count(option) != 0; }
    std::vector<std::string> All(const std::string& option) const
    {
        return Has(option) ? options.at(option) : std::vector<std::string>{};
    }
};

/// Why a text is not acceptable; empty when it is.
using ArgumentCheck = std::string (*)(const std::string& text);

/// The texts that a shell may offer for an argument; throws when they cannot be read.
using ArgumentSource = std::vector<std::string> (*)();

/// A positional argument. The last of a command may repeat.
struct ArgumentRow
{
    enum Count
    {
        ONE,
        OPTIONAL,
        ANY_NUMBER,
        AT_LEAST_ONE,
    };
    const char* name;
    Count count;
    const char* help;
    ArgumentCheck check = nullptr;
    ArgumentSource source = nullptr;
};

/// An option of one command; it may be repeated.
struct OptionRow
{
    const char* name;   ///< with its dashes
    const char* value;  ///< what its value is called; null for a flag
    const char* help;
    ArgumentCheck check = nullptr;
};

/// An option that works with every command.
struct GlobalOption
{
    const char* names;  ///< "-v, --verbose"
    const char* value;  ///< what its value is called; null for a flag
    const char* help;
};

/// One command. Parsing, help, completion, the manual page and the errors of a wrong call are made from this row alone.
struct Command
{
    const char* path;  ///< its words, noun first: "boot record set"
    const char* help;  ///< one line
    void (*handler)(const Arguments& arguments, Output& output);
    std::vector<ArgumentRow> arguments = {};
    std::vector<OptionRow> options = {};
    bool isLong = false;  ///< may take seconds: shows on a terminal how far it is
};

/// Every command, in the order in which help lists them.
const std::vector<Command>& Commands();

/// Every option that works with every command.
const std::vector<GlobalOption>& GlobalOptions();

/// The commands whose words begin with those of @p path; all for an empty one.
std::vector<const Command*> CommandsBelow(const std::string& path);
}  // namespace ConfigStoreCtl
