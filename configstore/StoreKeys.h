#pragma once

// Key/value entries of the config store that carry the boot state, and their fixed values.
namespace NimbConfigStore
{
inline constexpr const char* BOOT_MODE = "BOOT_MODE";          // decimal text of a BOOTMODE
inline constexpr const char* IS_BOOT = "IS_BOOT";              // "true" during automatic configuration
inline constexpr const char* NOTIFY_TRELLD = "NOTIFY_TRELLD";  // "true" or "false"
inline constexpr const char* POST_LIVE_INSTALL_BOOT = "POST_LIVE_INSTALL_BOOT";  // "true" or "false"
inline constexpr const char* BOOT_FS_UUID = "BOOT_FS_UUID";
inline constexpr const char* CS_INST_INFO_KEY = "CS_INST_INFO_KEY";
inline constexpr const char* BOOT_INFO = "BOOT_INFO";                  // {"type": N}
inline constexpr const char* BOOT_APPLY_RESULT = "BOOT_APPLY_RESULT";  // the boot apply record

inline constexpr const char* TRUE_STR = "true";
inline constexpr const char* FALSE_STR = "false";
}  // namespace NimbConfigStore
