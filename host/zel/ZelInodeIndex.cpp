#include "ZelInodeIndex.h"

#include <sys/stat.h>

#include "HostUtil.h"

using NimbConfigStore::JsonValue;

namespace
{
void AddFile(ZelInodeIndex& index, const std::string& path, const std::string& tardisk)
{
    struct stat found = {};
    if (stat(HostPath(path).c_str(), &found) != 0) {
        return;
    }
    const auto size = static_cast<std::uint64_t>(found.st_size);
    const auto [entry, added] = index.try_emplace(found.st_ino, ZelDeliveredInode{tardisk, found.st_dev, size, false});
    entry->second.ambiguous = entry->second.ambiguous || entry->second.device != found.st_dev;
}
}  // namespace

std::shared_ptr<const ZelInodeIndex> MakeZelInodeIndex(const JsonValue& tardisks)
{
    const auto index = std::make_shared<ZelInodeIndex>();
    for (const auto& tardisk : tardisks.GetObject()) {
        for (const JsonValue& file : tardisk.value.GetArray()) {
            const std::string path = file.GetString();
            const std::size_t name = path.rfind('/') + 1;
            AddFile(*index, path, tardisk.name.GetString());
            AddFile(*index, path.substr(0, name) + ".#" + path.substr(name), tardisk.name.GetString());
        }
    }
    return index;
}
