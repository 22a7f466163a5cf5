#pragma once

#include <algorithm>
#include <iterator>
#include <string>
#include <vector>

#include "MountTable.h"

// Which mounts may be asked how full they are: a server that is gone would make the question wait for ever, an
// automatic mount point would mount.

/// True for a file system that another machine, or a program of this one, answers for.
inline bool IsRemoteFileSystem(const std::string& type)
{
    static const char* const REMOTE[] = {"9p",    "afs",   "autofs", "beegfs", "ceph",    "cifs",
                                         "coda",  "gfs2",  "gpfs",   "lustre", "ncpfs",   "orangefs",
                                         "ocfs2", "pvfs2", "smb3",   "smbfs",  "virtiofs"};
    return std::find(std::begin(REMOTE), std::end(REMOTE), type) != std::end(REMOTE) || type.starts_with("nfs") ||
           type.starts_with("fuse");
}

/// Whether neither @p entry nor a file system that its mount point lies in, as @p table has them, is remote. The one at
/// "/" does not count among the latter: while it does not answer, no program of the host runs.
inline bool MayBeAskedHowFull(const std::vector<MountEntry>& table, const MountEntry& entry)
{
    if (IsRemoteFileSystem(entry.type)) {
        return false;
    }
    for (std::size_t end = entry.point.rfind('/'); end != 0 && end != std::string::npos;
         end = entry.point.rfind('/', end - 1)) {
        const MountEntry* above = FindMount(table, entry.point.substr(0, end));
        if (above != nullptr && IsRemoteFileSystem(above->type)) {
            return false;
        }
    }
    return true;
}
