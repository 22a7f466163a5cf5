#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include "CommandTable.h"

namespace ConfigStoreCtl
{
/// A call that no command takes; the text says why.
class WrongCall : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// A call, understood: a command with its arguments, or a text that was asked for.
struct Call
{
    const Command* command = nullptr;  ///< null when only @ref text is to be printed
    Arguments arguments;
    std::string text;
    std::string root;  ///< empty: the host itself
    bool json = false;
    bool verbose = false;
};

/// Understands the arguments that follow the program's name. @throws WrongCall
Call ParseCommandLine(const std::vector<std::string>& arguments);
}  // namespace ConfigStoreCtl
