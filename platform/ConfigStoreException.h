#pragma once

#include <exception>
#include <memory>
#include <string>
#include <vector>

#pragma GCC visibility push(default)

namespace HostCtl::Lib
{
/// Base of every exception that the host's control libraries throw.
class HostCtlException : public std::exception
{
public:
    /// @param message  what failed, where and why.
    explicit HostCtlException(std::string message);
    ~HostCtlException() override;
    /// The message.
    const char* what() const noexcept override;

private:
    std::string message_;
    std::shared_ptr<void> context_;  // attached by management services; nothing here reads it
};
}  // namespace HostCtl::Lib

namespace NimbConfigStore
{
/// Why an operation failed. ErrorMessageForId gives each code's message template.
enum CSErrorCodes : int
{
    CS_ERROR_STAGE_DESIRED = 1005,        ///< a desired configuration could not be staged
    CS_ERROR_COMMIT = 1012,               ///< a transaction could not be committed
    CS_ERROR_INSTANCE_ID_MISSING = 1032,  ///< an instance lacks its identifier member; argument: the member
    CS_ERROR_JSON_TEXT = 1080,            ///< a JSON text does not parse
    CS_ERROR_JSON_FILE = 1081,            ///< a JSON file does not parse or cannot be read; argument: the path
    CS_ERROR_JSON_TYPE = 1082,            ///< a JSON value is not of the type or shape that was asked of it
    CS_ERROR_VALIDATION = 1083,           ///< a validation finding; arguments: the place and the finding
    CS_ERROR_COMMAND_START = 1102,        ///< a command could not be started; argument: the system's error text
    CS_ERROR_COMMAND_WAIT = 1103,         ///< waiting for a command failed; arguments: process id, error text
    CS_ERROR_COMMAND_FAILED = 1104,       ///< a command failed; argument: its exit status or signal number
    CS_ERROR_OPERATION = 2000,            ///< a store or document operation failed; the text says which
};

/// A failed operation: a code of CSErrorCodes and a text that says what, where and why.
class ConfigStoreException : public HostCtl::Lib::HostCtlException
{
public:
    /// @param code  one of CSErrorCodes.
    ConfigStoreException(int code, const char* message);
    ~ConfigStoreException() override;
    /// The code it was made with.
    int code() const noexcept { return code_; }

private:
    int code_;
    std::vector<std::string> arguments_;
};

/// Bad input: a document that does not parse, a malformed argument.
class InvalidArgumentException : public ConfigStoreException
{
public:
    /// @param code  one of CSErrorCodes.
    InvalidArgumentException(int code, const char* message);
    ~InvalidArgumentException() override;
};

/// The printf template of a code: as many %s (for CS_ERROR_COMMAND_WAIT one %d and one %s, for
/// CS_ERROR_COMMAND_FAILED one %d) as the code has arguments. An unknown code gives a template without any.
const char* ErrorMessageForId(CSErrorCodes code);
}  // namespace NimbConfigStore

#pragma GCC visibility pop
