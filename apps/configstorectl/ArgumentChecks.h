#pragma once

#include <string>

// Checks of the arguments that name something on the host: why the text is not acceptable, empty when it is.
namespace ConfigStoreCtl
{
/// "true" or "false".
std::string CheckTruth(const std::string& text);

/// An absolute path without control characters: the lists of files have a line for each.
std::string CheckHostFile(const std::string& path);

/// The same, or a path below the root without its leading slash.
std::string CheckListedFile(const std::string& path);

/// The form of a schema identifier, NAME-VERSION. Whether anything ships it is not asked.
std::string CheckSchemaId(const std::string& id);
}  // namespace ConfigStoreCtl
