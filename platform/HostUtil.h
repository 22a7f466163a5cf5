#pragma once

#include <sys/types.h>
#include <optional>
#include <string>
#include <vector>

#pragma GCC visibility push(default)

/// The host root. Every fixed path of the system is a logical path; HostPath turns it into a real one at the place
/// where it is handed to the operating system, and nowhere else. Log lines, events and results stay logical.
///
/// Inside another root than "/" resolution stays inside it: an absolute link is followed from that root, ".."
/// stops at it. Nothing here caches, so the answers follow the file system.
/// SetHostRoot is called before anything else, by one thread; an empty name throws std::filesystem::filesystem_error.
void SetHostRoot(const std::string& root);
/// The folder that stands for "/", as it was set.
const std::string& HostRoot();

/// True when the root is "/": the facts, the system log and the kernel are this machine's.
bool IsRealHost();

/// The real path of a logical one, links followed, the last component too. The last components need not exist. A path
/// with more than 40 links becomes one that can be neither opened nor created.
std::string HostPath(const std::string& path);

/// The same, but a link in the last component is not followed (lstat, unlink, rename).
std::string HostPathNoFollow(const std::string& path);

/// realpath() in logical terms: the resolved logical path, or nothing when a component is missing.
std::optional<std::string> HostRealPath(const std::string& path);

/// True when the logical path exists (any file type, links followed).
bool File_Exists(const char* path);

/// Copies a file as a whole: temporary file beside @p to, write, sync, rename, sync the folder.
/// A file that is replaced passes its mode on, a new one has the mode of @p from; a link under the name @p to is
/// replaced, not followed.
/// @return 0, or the errno of the step that failed; nothing is then left under a temporary name. A folder that
/// cannot be synced after the rename is a warning in the log, no failure.
int HostCopyFile(const std::string& from, const std::string& to);

/// Replaces a file with @p content in the same way; a new one has mode 0644.
int HostReplaceFile(const std::string& path, const std::string& content);

/// Opens a logical path, inside the root, with O_CLOEXEC added to @p flags; with O_CREAT in a folder that everyone may
/// write to, O_NOFOLLOW too. -1 and errno on failure.
int HostOpen(const std::string& path, int flags, mode_t mode = 0644);

/// Opens a regular file for reading without ever waiting. -1 and errno on failure: EISDIR for a folder, EINVAL for
/// a pipe, a device or a socket.
int HostOpenRegular(const std::string& path);

/// Creates a folder and its missing parents, but never the host root itself. 0, or an errno.
int HostMakeFolders(const std::string& path);

/// The system log: syslog(3) on a real host, /var/log/talvor/syslog.log inside another root, whose messages are not
/// this machine's. @p priority is a syslog level (LOG_ERR, LOG_INFO, LOG_DEBUG).
void HostSyslog(int priority, const char* format, ...) __attribute__((format(printf, 2, 3)));

/// Starts argv[0] with the argument vector argv (null-terminated), without a shell. @return its process id, or -1
/// with errno set. A program that cannot be executed is a failed start.
pid_t HostSpawn(const char* const* argv);

/// Mounts a file system at the logical folder @p point, like mount(2). A file-system type "quenfs" is a ramdisk, a
/// tmpfs here; its @p data are seven fields parted by commas, of which the second is the size in MiB, the sixth the
/// mode of the top folder in octal, and the last the name, which the mount table shows as its source. It is not mounted
/// over another mount.
/// @return 0, or an errno: EBUSY for a ramdisk at a mount point, EINVAL for data of another form. What keeps the mount
/// table from being read fails a ramdisk too, after a log line.
int HostMount(const char* source, const char* point, const char* type, unsigned long flags, const char* data);

/// The host's switches, from /etc/talvor/platform/features.json; a missing file or member gives the default, a
/// file that does not parse is logged and gives the defaults.
struct FeatureList
{
    bool schemaVersioning = true;               ///< process only the newest version of each schema
    bool nimbioPlacement = false;               ///< register schemas by their SmartNIC placement
    bool shrinkableBackupRamdisk = false;       ///< no memory is set aside for the backup ramdisk
    bool preserveNetworkConfiguration = false;  ///< entry 33: desired documents leave the network alone
};

/// Reads the switches anew.
FeatureList FeatureState_InitSilentMode();

#pragma GCC visibility pop
