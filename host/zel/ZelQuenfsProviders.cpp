#include <sys/stat.h>

#include <algorithm>
#include <cstring>
#include <fstream>

#include "CSLogger.h"
#include "HostUtil.h"
#include "ZelKernelFacts.h"
#include "ZelParamList.h"
#include "ZelProviders.h"

using NimbConfigStore::JsonValue;

namespace
{
const std::string LIMIT_FOLDER = "/var/run/talvor/zel/memUsageLimit";

/// A ramdisk's name becomes a file's name.
bool IsRamdiskName(const std::string& name)
{
    return !name.empty() && name.size() < 128 && name != "." && name != ".." && name.find('/') == std::string::npos;
}

bool HasInode(const std::string& path, std::uint64_t inode, struct stat& found)
{
    return stat(HostPath(path).c_str(), &found) == 0 && found.st_ino == inode;
}

/// True when the delivered file, or the tardisk's own copy of it that stays after a change, has the inode.
bool IsDelivered(const std::string& path, std::uint64_t inode, struct stat& found)
{
    const std::size_t name = path.rfind('/') + 1;
    return HasInode(path, inode, found) || HasInode(path.substr(0, name) + ".#" + path.substr(name), inode, found);
}

bool ListsFilesByTardisk(const JsonValue& tardisks)
{
    const auto isPath = [](const JsonValue& file) { return file.IsString(); };
    const auto isList = [&](const JsonValue::Member& tardisk) {
        return tardisk.value.IsArray() && std::all_of(tardisk.value.Begin(), tardisk.value.End(), isPath);
    };
    return tardisks.IsObject() && std::all_of(tardisks.MemberBegin(), tardisks.MemberEnd(), isList);
}

/// The name of the tardisk that delivered the inode; null when none did.
const char* TardiskOf(const JsonValue& tardisks, std::uint64_t inode, struct stat& found)
{
    for (const auto& tardisk : tardisks.GetObject()) {
        for (const JsonValue& file : tardisk.value.GetArray()) {
            if (IsDelivered(file.GetString(), inode, found)) {
                return tardisk.name.GetString();
            }
        }
    }
    return nullptr;
}

std::string StatsRecord(const char* tardisk, const struct stat& found)
{
    ZEL_InodeStats stats = {};
    stats.inode = found.st_ino;
    stats.sizeBytes = static_cast<std::uint64_t>(found.st_size);
    std::strncpy(stats.tardisk, tardisk, sizeof stats.tardisk - 1);
    return {reinterpret_cast<const char*>(&stats), sizeof stats};
}
}  // namespace

ORV_ReturnStatus GetMemUsageLimit(const ZEL_ParamList& instance, std::string& data)
{
    const std::string& ramdisk = instance.Text(0);
    if (!IsRamdiskName(ramdisk)) {
        return ORV_NOT_FOUND;
    }
    std::ifstream kept(HostPath(LIMIT_FOLDER + "/" + ramdisk));
    if (!kept.is_open()) {
        return ORV_NOT_FOUND;
    }
    ZEL_MemUsageLimit limit = {};
    if (!(kept >> limit.warningPercent >> limit.errorPercent)) {
        return ORV_FAILURE;
    }
    data.assign(reinterpret_cast<const char*>(&limit), sizeof limit);
    return ORV_OK;
}

ORV_ReturnStatus SetMemUsageLimit(const ZEL_ParamList& instance, const ZEL_ParamList& input)
{
    const std::string& ramdisk = instance.Text(0);
    const ZEL_MemUsageLimit limit = {input.Integer(0), input.Integer(1)};
    if (!IsRamdiskName(ramdisk) || limit.warningPercent < 0 || limit.errorPercent < limit.warningPercent ||
        limit.errorPercent > 100) {
        return ORV_BAD_PARAM;
    }
    int error = HostMakeFolders(LIMIT_FOLDER);
    if (error == 0) {
        error = HostReplaceFile(LIMIT_FOLDER + "/" + ramdisk,
                                std::to_string(limit.warningPercent) + " " + std::to_string(limit.errorPercent) + "\n");
    }
    if (error != 0) {
        CSLogger::Log(CSLogger::ERROR, "Cannot keep the usage limits of ramdisk %s in %s: %s", ramdisk.c_str(),
                      LIMIT_FOLDER.c_str(), std::strerror(error));
        return ORV_FAILURE;
    }
    return ORV_OK;
}

ORV_ReturnStatus GetInodeStats(const ZEL_ParamList& instance, std::string& data)
{
    if (IsRealHost())  // a plain Linux host has no such file system
    {
        return ORV_NOT_FOUND;
    }
    NimbConfigStore::JsonDocument facts;
    if (const ORV_ReturnStatus status = LoadKernelFacts(facts); status != ORV_OK) {
        return status;
    }
    const auto tardisks = facts.FindMember("tardisks");
    if (tardisks == facts.MemberEnd() || !ListsFilesByTardisk(tardisks->value)) {
        CSLogger::Log(CSLogger::ERROR, "The kernel's facts in %s give no files by tardisk", KERNEL_FACTS_FILE);
        return ORV_FAILURE;
    }
    struct stat found = {};
    const char* tardisk = TardiskOf(tardisks->value, static_cast<std::uint64_t>(instance.Integer(0)), found);
    if (tardisk == nullptr) {
        return ORV_NOT_FOUND;
    }
    data = StatsRecord(tardisk, found);
    return ORV_OK;
}
