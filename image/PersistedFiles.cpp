#include <sys/stat.h>
#include <syslog.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <string>
#include <unordered_set>

#include "CSLogger.h"
#include "HostUtil.h"
#include "NimbConfigStore.h"
#include "NimbImage.h"
#include "NimbSchemaStore.h"
#include "StorePaths.h"
#include "ZEL.h"
#include "ZELSH.h"

namespace NimbConfigStore
{
namespace
{
const char* const BACKUP_LIST = "/var/run/talvor/files/backup-list";
const char* const SKIP_BACKUP_LIST = "/var/run/talvor/files/skip-backup-list";
const char* const INODES_NODE = "/system/quenfs/inodes";
const char* const STATS_LEAF = "stats";

const char* const FILES_COMPONENT = "files";
const char* const VITAL = "vital";
const char* const CACHED = "cached";
const char* const CONFIG = "config";

using PathSet = std::unordered_set<std::string>;

/// What the schemas declare at the time of one call, by persistence class.
struct ClassSets
{
    PathSet vital;
    PathSet cached;
    PathSet config;

    bool Contain(const std::string& path) const
    {
        return vital.contains(path) || cached.contains(path) || config.contains(path);
    }
};

struct PathDeleter
{
    void operator()(ZELSHPath* path) const { ZELSHPath_Delete(path); }
};

struct ParamListDeleter
{
    void operator()(ZEL_ParamList* list) const { ZEL_ParamListDestroy(list); }
};

struct TypeRelease
{
    void operator()(const ZEL_Type* type) const { ZEL_ReleaseType(type); }
};

struct DeclaredFile
{
    std::string persistence;
    std::string path;
};

/// What one schema object declares; nothing when it does not say or is switched off.
std::optional<DeclaredFile> DeclaredBy(const NimbSchemaStore::SchemaObject& object)
{
    bool enabled = false;
    DeclaredFile file;
    const bool declared = object.GetFileEnabled(enabled) && enabled && object.GetFilePersistence(file.persistence) &&
                          object.GetFilePath(file.path);
    return declared ? std::optional(file) : std::nullopt;
}

ClassSets DeclaredSets()
{
    const std::unordered_map<std::string, std::vector<std::string>> files = GetBrevFiles();
    const auto setOf = [&files](const char* persistence) {
        const std::vector<std::string>& paths = files.at(persistence);
        return PathSet(paths.begin(), paths.end());
    };
    return {setOf(VITAL), setOf(CACHED), setOf(CONFIG)};
}

/// The tardisks of the brevs that let changed files persist.
PathSet PermittedTardisks()
{
    PathSet tardisks;
    for (const auto& [id, brev] : NimbImage::GetNimbImage()) {
        if (!brev.restrictStickyFiles) {
            tardisks.insert(brev.payloads.begin(), brev.payloads.end());
        }
    }
    return tardisks;
}

bool IsLink(const std::string& path)
{
    struct stat status = {};
    return lstat(HostPathNoFollow(path).c_str(), &status) == 0 && S_ISLNK(status.st_mode);
}

bool LeadsThroughLink(std::string path)
{
    while (!path.empty() && path != "/") {
        if (IsLink(path)) {
            return true;
        }
        path.erase(path.find_last_of('/') != std::string::npos ? path.find_last_of('/') : 0);
    }
    return false;
}

/// True when the path is declared under the name that it has without links.
bool IsDeclaredBehindLinks(const std::string& path, const ClassSets& declared)
{
    if (!LeadsThroughLink(path)) {
        return false;
    }
    const std::optional<std::string> resolved = HostRealPath(path);
    return resolved && declared.Contain(*resolved);
}

/// Reads a leaf whose data has the layout of ZEL_InodeStats on both sides of the interface.
bool GetInodeStats(ZEL_NodeID leaf, const ZEL_ParamList* arguments, ZEL_InodeStats& stats)
{
    const ZEL_Type* output = nullptr;
    if (ZEL_LookupOutputTypeOfGet(leaf, &output) != ORV_OK) {
        return false;
    }
    const std::unique_ptr<const ZEL_Type, TypeRelease> type(output);
    return type->size == sizeof stats && ZEL_Get(leaf, arguments, &stats, sizeof stats) == ORV_OK;
}

/// The name of the tardisk that holds a file's inode; empty when the kernel gives none.
std::string TardiskOfInode(const struct stat& file)
{
    char text[4096];
    snprintf(text, sizeof text, "%s/%lu/%s", INODES_NODE, static_cast<unsigned long>(file.st_ino), STATS_LEAF);
    ZELSHPath* formed = nullptr;
    ZEL_ParamList* listed = nullptr;
    ZEL_NodeID leaf = {};
    ZEL_InodeStats stats = {};
    if (ZELSHPath_Form(text, &formed) != ORV_OK) {
        return "";
    }
    const std::unique_ptr<ZELSHPath, PathDeleter> path(formed);
    if (ZELSHPath_GetLeafElement(formed, &leaf) != ORV_OK || ZELSHPath_GetInstArgs(formed, &listed) != ORV_OK) {
        return "";
    }
    const std::unique_ptr<ZEL_ParamList, ParamListDeleter> arguments(listed);
    // The number alone does not tell a file: on another file system it is another one's.
    return GetInodeStats(leaf, listed, stats) && stats.device == file.st_dev ? stats.tardisk : "";
}

/// "FOLDER/.#NAME": the tardisk's own copy of a file that has been changed.
std::string ShadowPath(const std::string& path)
{
    const std::size_t slash = path.find_last_of('/');
    const std::size_t name = slash == std::string::npos ? 0 : slash + 1;
    return path.substr(0, name) + ".#" + path.substr(name);
}

/// The name of the tardisk that first delivered a file; empty when that cannot be told.
std::string TardiskOfFile(const std::string& path)
{
    const std::string shadowPath = HostPath(ShadowPath(path));
    struct stat shadow = {};
    if (stat(shadowPath.c_str(), &shadow) != 0) {
        HostSyslog(LOG_ERR, "File stat(%s) failed with error %d", path.c_str(), errno);
        return "";
    }
    if (ZEL_CheckSig(ZEL_DefsMD5Sum, ZEL_INTERFACE_VERSION) != ORV_OK) {
        HostSyslog(LOG_ERR, "Failed to init zel");
        return "";
    }
    return TardiskOfInode(shadow);
}

bool PassesTardiskTest(const std::string& path, const PathSet& permittedTardisks)
{
    const std::string tardisk = TardiskOfFile(path);
    if (!tardisk.empty() && permittedTardisks.contains(tardisk)) {
        return true;
    }
    if (tardisk.empty()) {
        HostSyslog(LOG_ERR, "File %s cannot be mapped to tardisk, hence it should not be persisted.", path.c_str());
    } else {
        HostSyslog(LOG_ERR,
                   "File %s in tardisk %s does not belong to brev which allows persistence of sticky bit files",
                   path.c_str(), tardisk.c_str());
    }
    HostSyslog(LOG_ERR, "File %s will not be persisted.", path.c_str());
    return false;
}

bool MayPersist(const std::string& path, const ClassSets& declared, const PathSet& permittedTardisks)
{
    if (path.starts_with("/opt") && path.find(VITAL) != std::string::npos) {
        return declared.vital.contains(path) || PassesTardiskTest(path, permittedTardisks);
    }
    return declared.Contain(path) || IsDeclaredBehindLinks(path, declared) ||
           PassesTardiskTest(path, permittedTardisks);
}

/// Replaces the list at @p listPath. A write that fails is logged. @return false when the list cannot be opened.
bool WriteList(const std::string& listPath, const std::vector<std::string>& files)
{
    (void)HostMakeFolders(std::filesystem::path(listPath).parent_path().string());  // opening shows whether they stand
    std::ofstream list(HostPath(listPath), std::ios::trunc);
    if (!list.is_open()) {
        return false;
    }
    for (const std::string& file : files) {
        list << file << "\n";
    }
    if (!list.flush()) {
        CSLogger::Log(CSLogger::ERROR, "Failed to write %s", listPath.c_str());
    }
    return true;
}
}  // namespace

std::unordered_map<std::string, std::vector<std::string>> GetBrevFiles()
{
    std::unordered_map<std::string, std::vector<std::string>> files{{VITAL, {}}, {CACHED, {}}, {CONFIG, {}}};
    const auto store = NimbSchemaStore::SchemaStore::GetStore(false);
    for (const NimbSchemaStore::SchemaObjectPtr& object : store->GetObjectsOfComponent(FILES_COMPONENT)) {
        const std::optional<DeclaredFile> file = DeclaredBy(*object);
        const auto list = file ? files.find(file->persistence) : files.end();
        if (list != files.end()) {
            list->second.push_back(file->path);
        }
    }
    return files;
}

std::vector<std::string> FilterStickyBitFiles(const std::vector<std::string>& files)
{
    const ClassSets declared = DeclaredSets();
    const PathSet permittedTardisks = PermittedTardisks();
    const ZEL_Snapshot kernel;  // the origin of all inodes is gathered once, not once for each file
    std::vector<std::string> kept;
    std::vector<std::string> refused;
    for (const std::string& file : files) {
        (MayPersist(file, declared, permittedTardisks) ? kept : refused).push_back(file);
    }
    if (!refused.empty()) {
        (void)WriteList(SKIP_BACKUP_LIST, refused);  // a diagnosis only: the answer does not depend on it
    }
    return kept;
}

void TrackFiles(const std::vector<std::string>& files, FileType type)
{
    if (files.empty()) {
        return;
    }
    if (type != FileType::Backup && type != FileType::NonSchema) {
        CSLogger::Log(CSLogger::ERROR, "Invalid file type specified.");
        return;
    }
    if (!WriteList(type == FileType::Backup ? BACKUP_LIST : NON_SCHEMA_FILES, files)) {
        CSLogger::Log(CSLogger::ERROR, "Failed to open file for tracking");
    }
}
}  // namespace NimbConfigStore
