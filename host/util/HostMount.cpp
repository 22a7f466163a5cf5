#include <fcntl.h>
#include <sys/mount.h>

#include <cerrno>
#include <cstring>

#include "FileHandle.h"
#include "HostUtil.h"
#include "KernelFile.h"
#include "MountTable.h"
#include "QuenfsData.h"

namespace
{
int MountRamdisk(const char* point, unsigned long flags, const char* text)
{
    const std::optional<QuenfsData> data = ParseQuenfsData(text != nullptr ? text : "");
    if (!data) {
        return EINVAL;
    }
    const std::optional<std::string> folder = HostRealPath(point);
    if (!folder) {
        return ENOENT;
    }
    // A tmpfs would be mounted over what is there and hide it.
    if (FindMount(HostMounts(), *folder) != nullptr) {
        return EBUSY;
    }
    const std::string options = TmpfsOptions(*data);
    return mount(data->name.c_str(), HostPath(*folder).c_str(), "tmpfs", flags, options.c_str()) == 0 ? 0 : errno;
}

/// The logical path of a mount point, or nothing outside the root.
std::optional<std::string> LogicalPath(const std::string& real)
{
    const std::string& root = HostRoot();
    if (IsRealHost() || !real.starts_with(root)) {
        return IsRealHost() ? std::optional(real) : std::nullopt;
    }
    const std::string rest = real.substr(root.size());
    if (rest.empty()) {
        return "/";
    }
    return rest.starts_with('/') ? std::optional(rest) : std::nullopt;
}
}  // namespace

std::vector<MountEntry> HostMounts()
{
    const FileHandle table(open(MOUNT_TABLE_FILE, O_RDONLY | O_CLOEXEC));  // this machine's, whatever the root
    std::vector<MountEntry> inside;
    for (MountEntry& entry : ParseMountTable(ReadToEnd(table.Get()).value_or(""))) {
        if (std::optional<std::string> point = LogicalPath(entry.point)) {
            entry.point = *point;
            inside.push_back(std::move(entry));
        }
    }
    return inside;
}

int HostMount(const char* source, const char* point, const char* type, unsigned long flags, const char* data)
{
    if (std::strcmp(type, "quenfs") == 0) {
        return MountRamdisk(point, flags, data);
    }
    return mount(source, HostPath(point).c_str(), type, flags, data) == 0 ? 0 : errno;
}
