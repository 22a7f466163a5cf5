#pragma once

/// The files of a boot that tests put there, take away or damage.
inline constexpr const char* STORE = "/etc/talvor/configstore/current-store-1";
inline constexpr const char* DATAFILE_STORE = "/etc/talvor/configstore/datafile-store";
inline constexpr const char* BACKUP = "/var/lib/talvor/configstore/backup/current-store-1";
inline constexpr const char* DATAFILE_BACKUP = "/var/lib/talvor/configstore/backup/datafile-store";
inline constexpr const char* FIRSTBOOT_BACKUP = "/var/lib/talvor/configstore/firstbootBackup/current-store-1";
inline constexpr const char* BOOT_DOCUMENT = "/etc/talvor/boot_configuration.json";
inline constexpr const char* EARLIER_ERRORS = "/var/run/talvor/files/loadStoreErrors.json";

/// A boot file system that no test's host has booted from before.
inline constexpr const char* OTHER_UUID = "0b1c2d3e-4f50-4a61-8b72-9c83ad94be05";
