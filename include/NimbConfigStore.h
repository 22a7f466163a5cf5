#pragma once

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include <rapidjson/document.h>

#include "ConfigStoreException.h"

#pragma GCC visibility push(default)

namespace NimbSchemaStore
{
class SchemaObjectCache;
}

/// Control of the host's configuration store.
///
/// Unless a call says otherwise: failures are ConfigStoreException with code 2000 and a text that says what failed;
/// what a call has written is durable when it returns; calls may be made from any thread, each working on
/// connections of its own thread, and from several processes at once.
namespace NimbConfigStore
{
// ---- Boot ---------------------------------------------------------------------------------------------------------

/// What the next boot applies.
enum BOOTMODE : int
{
    BOOTMODE_NONE = 0,            ///< nothing beyond folding staged values
    BOOTMODE_DESIRED_CONFIG = 1,  ///< the staged desired configuration, as a whole
    BOOTMODE_BOOT_CONFIG = 2,     ///< the boot configuration document
    BOOTMODE_SMARTNIC = 3,        ///< the staged SmartNIC configuration
    BOOTMODE_HOSTAPI = 4,         ///< the staged changes of single objects
};

/// Mounts the ramdisks of the store and of its backup, and has the store's warn at 80 percent of its memory and fail at
/// 90. Called once per boot, before LoadStore, on a host whose store lives in memory.
/// @return 0.
/// @throws ConfigStoreException 2000 when a ramdisk cannot be mounted (its mount point must exist, with nothing mounted
///         there) or the kernel refuses the limits; what was mounted before stays mounted.
int SetupStoreRamDisk();

/// Brings the store into service; called once per boot, before host services use it. Logs to "configstore-boot".
/// @param restore  restore the databases from their backups first, and create what is missing.
/// @return 0 when the sequence ran to its end (single steps may have failed: they are logged and raised as events),
///         1 when an exception ended it; a system alert then says why. Never throws.
int LoadStore(bool restore);

/// Opens and closes the period of the boot in which automatic configuration may write. Never fail visibly.
/// @{
void StartAutoConf();
void EndAutoConf();
/// @}
/// True between the two. @throws ConfigStoreException when the store cannot be read.
bool IsAutoConf();

/// Turns change notification on or off.
void EnableTrelldNotification(bool enable);

/// Records what the next boot applies. Inside a transaction that the calling thread holds on the config store it
/// takes part in it; while another process holds one it waits at most 3000 ms.
void SetBootMode(BOOTMODE mode);
/// @throws ConfigStoreException when the entry cannot be read, std::invalid_argument or std::out_of_range when it
///         holds no number. An absent entry is BOOTMODE_NONE.
BOOTMODE GetBootMode();

/// Marks ("true") or unmarks ("false", and any other text) that software was installed without a reboot.
/// @return 0 when the mark was written, 1 otherwise, also for a null @p status, which writes nothing.
int SetLiveInstallBoot(const char* status);

/// Ends a boot: remembers the boot file system, takes the live-install mark back.
void CleanupBootState();

/// Free text kept for the installer. An unset text reads as empty.
/// @{
void SetInstallInfo(const std::string& info);
std::string GetInstallInfo();
/// @}

/// UUID of the file system the host booted from.
/// @param checkInterface  make sure first that the kernel information interface is usable.
std::string GetBootFsUUID(bool checkInterface);

/// What kind of boot is under way. Each throws ConfigStoreException when a boot fact cannot be read.
bool IsInstalled();         ///< neither a network boot nor one from installer media
bool IsDebugUpgrade();      ///< the upgrade is to stop at its first failure
bool IsSkorlInstalled();    ///< the installer has just run
bool HasBootbankChanged();  ///< the host booted from another file system than last time, or never recorded one
bool IsUpgrade();           ///< configuration must be upgraded

// ---- Cleanup ------------------------------------------------------------------------------------------------------

/// Drops the values that automatic configuration wrote in the previous boot, and rows that held nothing else.
void CleanupAutoConfig();

/// Removes rows and data-file metadata that no schema describes. Failures are logged, not thrown.
/// @param keepDataFiles  leave the folders of removed data files on disk.
void CleanupStore(bool keepDataFiles);

/// Makes the files under "/var/cache/datafiles" and their metadata agree. Failures are logged and raised as events;
/// a file that cannot be removed throws std::filesystem::filesystem_error.
void CleanupDataFiles();

// ---- Schemas and default configuration ----------------------------------------------------------------------------

/// Registers the schemas of the installed packages and rebuilds default configuration.
/// @param schemaIds  identifiers to accept besides those that the image declares.
/// @return false when anything failed; bad files are logged, raised as events and skipped. One without an identifier,
///         or with one that nobody declares, is skipped the same way but is no failure.
bool ProcessSchemas(const std::vector<std::string>& schemaIds);

/// The same after a live install, followed by the upgrade modules (paths of shared objects).
bool RefreshConfigStore(std::vector<std::string> schemaIds, std::vector<std::string> modules);

/// Rebuilds default configuration alone, as one transaction.
/// @param nimbio  the host is a SmartNIC: variants for that side are used.
bool ProcessDefaultConfiguration(bool nimbio);

// ---- JSON documents -----------------------------------------------------------------------------------------------

/// One step of a path into a document: a member and, where that is an array, the element whose @p key is @p value.
struct JsonNode
{
    const char* name = nullptr;  ///< of the member
    const char* key = nullptr;   ///< member of the element that tells it from the others
    std::string value{};         ///< what that member holds
};

/// A parsed document and the pool that owns its values; values stay valid as long as someone holds it.
class JsonDoc
{
public:
    JsonDoc();
    ~JsonDoc();  // the document goes before the pool that owns its values
    JsonDoc(const JsonDoc&) = delete;
    JsonDoc& operator=(const JsonDoc&) = delete;

    /// The value that @p path leads to; the root when it is empty.
    /// @throws ConfigStoreException 2000 when a member or element is missing, 1082 when an element lacks the key.
    rapidjson::Value* GetJsonValuePtr();

    std::vector<JsonNode> path;                                     ///< for GetJsonValuePtr
    std::shared_ptr<rapidjson::Document> document;                  ///< never null
    std::shared_ptr<rapidjson::Document::AllocatorType> allocator;  ///< new values must be allocated here
};

/// A document that holds null.
std::shared_ptr<JsonDoc> CreateDocument();
/// @throws InvalidArgumentException 1081, naming the path, when the file cannot be read or is not one JSON text.
std::shared_ptr<JsonDoc> CreateDocumentFromFile(const std::string& path);
/// @throws InvalidArgumentException 1080 when the text is not one JSON text.
std::shared_ptr<JsonDoc> CreateDocumentFromString(const std::string& text);

// ---- Validation ---------------------------------------------------------------------------------------------------

/// True when every object of a desired document is known and keeps to its schema; every finding is logged.
/// @throws ConfigStoreException 2000 without a cache.
bool ValidateDesiredDocument(rapidjson::Document& desired,
                             const std::shared_ptr<NimbSchemaStore::SchemaObjectCache>& cache);

/// True when one object's value keeps to @p schema; every finding is logged with @p name.
/// @param allowDeleteDefault  a text is then accepted exactly when it is "DELETE_DEFAULT".
bool ValidateUserObject(const rapidjson::Value& schema, const rapidjson::Value& object, const std::string& name,
                        bool allowDeleteDefault);

/// True when a validation report is empty; logs every finding. @throws ConfigStoreException 1082 for a malformed one.
bool checkValidationErrors(const rapidjson::Value& report);

// ---- Desired configuration ----------------------------------------------------------------------------------------
//
// Staging changes nothing until the next boot, which applies all that is staged or none of it. A document is
// component → group → key → object | array of instances | "DELETE_DEFAULT"; later members win over earlier ones of the
// same name. Each call is one transaction: on return what it staged, and the boot mode, survive a power cut; when it
// throws, the rows and the mode staged before stand.

/// Stages @p desired, or what its root member "profile" holds, in place of everything staged before, and sets
/// BOOTMODE_DESIRED_CONFIG. Some of the live configuration is staged with it: distributed switches that the document
/// leaves out, permissions of solution users, options of the network virtualisation agent, on a host that preserves
/// its network all adapters and switches; so are the defaults of objects that the document does not mention.
/// Call ValidateDesiredDocument first: nothing is checked here beyond what staging needs.
/// @param desired  generated identifiers and preserved port bindings are written into it. After a failure it may hold
///        some of them, and can be staged again.
/// @throws ConfigStoreException 2000: "SetDesiredUserConfig failed: " and the reason, or, when the store cannot be
///         opened or stays locked for 3000 ms, the reason alone.
void SetDesiredUserConfig(rapidjson::Document& desired);

/// Stages the configuration of a SmartNIC-hosted system in place of everything staged before, and sets
/// BOOTMODE_SMARTNIC: what @p desired holds (no "profile"), a delete for "DELETE_DEFAULT", and for every shared object
/// that it leaves out a return to the default or a delete. Every key is validated first; all findings are logged.
/// @param desired  as above.
/// @throws ConfigStoreException 2000: "SetDesiredSmartnicConfiguration failed: " and the reason, or, when the stores
///         cannot be opened or stay locked for 3000 ms, the reason alone.
void SetDesiredSmartnicConfiguration(rapidjson::Document& desired);

/// Stages the delete of one whole object beside what is staged already, and sets BOOTMODE_HOSTAPI. Row and mode are
/// committed together. A value of the same object that was staged earlier stays staged, and outlives the delete.
/// @throws ConfigStoreException 2000 for an unknown object and when the store cannot be opened or stays locked for
///         3000 ms, 1005 when the delete or the mode cannot be written, 1012 when they cannot be committed;
///         InvalidArgumentException 2000 for a null argument.
void DeleteHostAPIConfiguration(const char* component, const char* group, const char* key);

// ---- Files --------------------------------------------------------------------------------------------------------

/// The files that the schemas declare, by persistence class: "vital", "cached" and "config", always all three.
std::unordered_map<std::string, std::vector<std::string>> GetBrevFiles();

/// Those of @p files that may persist, in order. Refused ones are listed in
/// "/var/run/talvor/files/skip-backup-list", which is left alone when there are none.
/// @throws std::runtime_error when the image database cannot be read.
std::vector<std::string> FilterStickyBitFiles(const std::vector<std::string>& files);

/// The file that tracks one kind of files.
enum class FileType : int
{
    Backup = 0,     ///< "/var/run/talvor/files/backup-list"
    NonSchema = 1,  ///< "/var/run/nonSchemaFiles"
};

/// Replaces a tracking file by @p files, one per line; an empty list leaves it as it is. Failures are logged.
void TrackFiles(const std::vector<std::string>& files, FileType type);

// ---- Reports ------------------------------------------------------------------------------------------------------

/// The boot apply record says how the boot went: {"isBootComplete": …, "bootApplyRecord": …}.
void clearBootApplyRecord();
/// @param record  kept as one text, not parsed.
void setBootApplyRecord(std::string record);
/// @throws ConfigStoreException 2000 when it cannot be read, InvalidArgumentException 1080 when it was never written
///         or is not JSON.
rapidjson::Document getBootApplyRecord();

/// A row that the boot did not restore.
struct FailureRecord
{
    std::string component;    ///< of its object
    std::string configGroup;  ///< of its object
    std::string name;         ///< the object's key
};
/// One record per row: two instances of one object give two.
std::vector<FailureRecord> GetBootTimeRestoreFailures();

/// Size of the config store: the characters of all values of one kind, and the number of rows.
/// @throws ConfigStoreException 2000 when the store cannot be opened or read, std::out_of_range when the number is
///         greater than an int holds.
/// @{
int GetVitalConfigSize();
int GetUserConfigSize();
int GetCachedConfigSize();
int GetConfigRowCount();
/// @}

/// The characters of every row's values, one text per row in the store's order:
/// "COMPONENT,GROUP,KEY,VITAL,USER,CACHED"; a value that the row does not have counts 0.
/// @throws ConfigStoreException 2000 when the store cannot be opened or read.
std::vector<std::string> GetConfigMetrics();
}  // namespace NimbConfigStore

#pragma GCC visibility pop
