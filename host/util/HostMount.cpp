#include <fcntl.h>
#include <sys/mount.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "CSLogger.h"
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
    const std::optional<std::vector<MountEntry>> mounts = HostMounts();
    if (!mounts) {
        const int reason = errno;
        CSLogger::Log(CSLogger::WARNING, "Cannot tell from %s what is mounted: %s", MOUNT_TABLE_FILE,
                      std::strerror(reason));
        return reason;
    }
    // A tmpfs would be mounted over what is there and hide it.
    if (FindMount(*mounts, *folder) != nullptr) {
        return EBUSY;
    }
    const std::string options = TmpfsOptions(*data);
    return mount(data->name.c_str(), HostPath(*folder).c_str(), "tmpfs", flags, options.c_str()) == 0 ? 0 : errno;
}

/// The host root as the mount table has it, without links; nothing, and errno, when it is not there.
std::optional<std::string> RealRoot()
{
    const std::unique_ptr<char, void (*)(void*)> root(realpath(HostRoot().c_str(), nullptr), std::free);
    return root != nullptr ? std::optional<std::string>(root.get()) : std::nullopt;
}

/// The logical path of the mount point @p real, or nothing outside @p root.
std::optional<std::string> LogicalPath(const std::string& root, const std::string& real)
{
    if (root == "/" || !real.starts_with(root)) {
        return root == "/" ? std::optional(real) : std::nullopt;
    }
    const std::string rest = real.substr(root.size());
    if (rest.empty()) {
        return "/";
    }
    return rest.starts_with('/') ? std::optional(rest) : std::nullopt;
}
}  // namespace

std::optional<std::vector<MountEntry>> HostMounts()
{
    const std::optional<std::string> root = RealRoot();
    const FileHandle table(open(MOUNT_TABLE_FILE, O_RDONLY | O_CLOEXEC));  // this machine's, whatever the root
    const std::optional<std::string> text = root && table.IsOpen() ? ReadToEnd(table.Get()) : std::nullopt;
    if (!text) {
        return std::nullopt;
    }
    std::vector<MountEntry> inside;
    for (MountEntry& entry : ParseMountTable(*text)) {
        if (std::optional<std::string> point = LogicalPath(*root, entry.point)) {
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
