#pragma once

#include <optional>
#include <string>

#include "NimbConfigStore.h"

namespace ConfigStoreCtl
{
/// The boot mode's name on the command line: none, desired, boot-config, smartnic or hostapi; "unknown" for a number
/// that is no mode.
const char* BootModeName(int mode);

/// Number and name, "1 (desired)"; "-" for none.
std::string BootModeText(std::optional<int> mode);

/// What the store says that the next boot applies; none when its entry holds no number.
std::optional<int> StoredBootMode();

/// The mode that @p text names, by name or by number. @throws std::invalid_argument when it names none.
NimbConfigStore::BOOTMODE ParseBootMode(const std::string& text);

/// Why @p text names no boot mode; empty when it names one.
std::string CheckBootMode(const std::string& text);
}  // namespace ConfigStoreCtl
