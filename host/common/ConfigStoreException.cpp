#include "ConfigStoreException.h"

#include <utility>

namespace HostCtl::Lib
{
HostCtlException::HostCtlException(std::string message) : message_(std::move(message)) {}

HostCtlException::~HostCtlException() = default;

const char* HostCtlException::what() const noexcept
{
    return message_.c_str();
}
}  // namespace HostCtl::Lib

namespace NimbConfigStore
{
ConfigStoreException::ConfigStoreException(int code, const char* message) : HostCtlException(message), code_(code) {}

ConfigStoreException::~ConfigStoreException() = default;

InvalidArgumentException::InvalidArgumentException(int code, const char* message) : ConfigStoreException(code, message)
{}

InvalidArgumentException::~InvalidArgumentException() = default;

const char* ErrorMessageForId(CSErrorCodes code)
{
    switch (code) {
        case CS_ERROR_STAGE_DESIRED:
            return "Failed to stage desired configuration.";
        case CS_ERROR_COMMIT:
            return "Failed to commit the transaction.";
        case CS_ERROR_INSTANCE_ID_MISSING:
            return "Instance identifier %s is missing.";
        case CS_ERROR_JSON_TEXT:
            return "Failed to parse JSON text.";
        case CS_ERROR_JSON_FILE:
            return "Failed to parse JSON file %s.";
        case CS_ERROR_JSON_TYPE:
            return "A JSON value has an unexpected type.";
        case CS_ERROR_VALIDATION:
            return "Validation error at %s: %s";
        case CS_ERROR_COMMAND_START:
            return "Failed to start command: %s";
        case CS_ERROR_COMMAND_WAIT:
            return "Failed to wait for process %d: %s";
        case CS_ERROR_COMMAND_FAILED:
            return "Command failed with status %d.";
        case CS_ERROR_OPERATION:
            return "ConfigStore operation failed.";
    }
    return "Unknown error.";
}

void ThrowJsonError(const char* text)
{
    throw ConfigStoreException(CS_ERROR_JSON_TYPE, text);
}
}  // namespace NimbConfigStore
