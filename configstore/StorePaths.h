#pragma once

// The fixed logical paths of the store's boot.
namespace NimbConfigStore
{
inline constexpr const char* STORE_FOLDER = "/etc/talvor/configstore";
inline constexpr const char* CURRENT_STORE_FILE = "/etc/talvor/configstore/current-store-1";
inline constexpr const char* DATAFILE_STORE_FILE = "/etc/talvor/configstore/datafile-store";
inline constexpr const char* BACKUP_FOLDER = "/var/lib/talvor/configstore/backup";
inline constexpr const char* FIRSTBOOT_BACKUP_FOLDER = "/var/lib/talvor/configstore/firstbootBackup";
inline constexpr const char* CURRENT_STORE_NAME = "/current-store-1";
inline constexpr const char* DATAFILE_STORE_NAME = "/datafile-store";
inline constexpr const char* UPGRADE_MARKER_FILE = "/tmp/config-upgrade-marker";
inline constexpr const char* UPGRADE_MODULE_FOLDER = "/usr/lib/talvor/configmanager/upgrade/lib";
inline constexpr const char* NON_SCHEMA_FILES = "/var/run/nonSchemaFiles";
inline constexpr const char* LOAD_STORE_ERRORS_FILE = "/var/run/talvor/files/loadStoreErrors.json";
inline constexpr const char* FIRSTBOOT_FILE = "/var/lib/talvor/firstboot/current-store-1";
inline constexpr const char* DATAFILE_ROOT = "/var/cache/datafiles";
inline constexpr const char* SCHEMA_FOLDER = "/usr/lib/talvor/configmanager/schemas";
inline constexpr const char* DEFAULT_CONFIG_FOLDER = "/etc/talvor/default-config";
inline constexpr const char* DEFAULT_CONFIG_ERRORS = "/var/run/talvor/files/errors-";  // followed by a file's name
inline constexpr const char* BOOT_DOCUMENT_FILE = "/etc/talvor/boot_configuration.json";
inline constexpr const char* HOST_CONFIGURATION_FILE = "/etc/talvor/host_configuration.json";
inline constexpr const char* NIMBIO_MARKER_FILE = "/etc/.nimbio";
}  // namespace NimbConfigStore
