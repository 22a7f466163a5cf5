#include "RemoteMounts.h"

#include <gtest/gtest.h>

namespace
{
/// Whether what is seen at @p point of the table may be asked.
bool MayBeAsked(const std::string& table, const std::string& point)
{
    const std::vector<MountEntry> entries = ParseMountTable(table);
    const MountEntry* entry = FindMount(entries, point);
    EXPECT_NE(entry, nullptr) << point;
    return entry != nullptr && MayBeAskedHowFull(entries, *entry);
}
}  // namespace

TEST(RemoteMounts, WhatAServerOrAProgramAnswersForIsNotAsked)
{
    for (const char* type : {"nfs", "nfs4", "cifs", "smb3", "9p", "ceph", "lustre", "beegfs", "gpfs", "virtiofs",
                             "fuse", "fuse.sshfs", "fuseblk", "autofs"}) {
        EXPECT_FALSE(MayBeAsked(std::string("23 20 0:32 / /srv rw - ") + type + " server:/export rw\n", "/srv"))
            << type;
    }
    for (const char* type : {"ext4", "btrfs", "tmpfs", "overlay", "proc"}) {
        EXPECT_TRUE(MayBeAsked(std::string("23 20 0:32 / /srv rw - ") + type + " /dev/sda1 rw\n", "/srv")) << type;
    }
}

TEST(RemoteMounts, WhatLiesBelowARemoteMountIsNotAskedAtAnyDepth)
{
    const char* const table =
        "20 1 8:1 / / rw - ext4 /dev/sda1 rw\n"
        "21 20 0:30 / /net rw - nfs4 server:/export rw\n"
        "22 21 0:31 / /net/a rw - tmpfs tmpfs rw\n"
        "23 22 0:32 / /net/a/b/c rw - tmpfs tmpfs rw\n"
        "24 20 0:33 / /network rw - tmpfs tmpfs rw\n"
        "25 24 0:34 / /network/net rw - tmpfs tmpfs rw\n";
    EXPECT_FALSE(MayBeAsked(table, "/net/a"));
    EXPECT_FALSE(MayBeAsked(table, "/net/a/b/c"));
    EXPECT_TRUE(MayBeAsked(table, "/"));
    EXPECT_TRUE(MayBeAsked(table, "/network"));
    EXPECT_TRUE(MayBeAsked(table, "/network/net"));
}

TEST(RemoteMounts, ARemoteMountThatIsCoveredIsNotInTheWay)
{
    const char* const table =
        "20 1 8:1 / / rw - ext4 /dev/sda1 rw\n"
        "21 20 0:30 / /boot rw - autofs systemd-1 rw\n"
        "22 21 8:2 / /boot rw - ext4 /dev/sda2 rw\n"
        "23 22 8:3 / /boot/efi rw - vfat /dev/sda3 rw\n";
    EXPECT_TRUE(MayBeAsked(table, "/boot"));
    EXPECT_TRUE(MayBeAsked(table, "/boot/efi"));
}

TEST(RemoteMounts, ARemoteRootHidesItselfOnly)
{
    const char* const table =
        "20 1 0:20 / / rw - nfs4 server:/root rw\n"
        "21 20 0:30 / /tmp rw - tmpfs tmpfs rw\n";
    EXPECT_FALSE(MayBeAsked(table, "/"));
    EXPECT_TRUE(MayBeAsked(table, "/tmp"));
}
