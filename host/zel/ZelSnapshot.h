#pragma once

#include <ifaddrs.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "MountTable.h"
#include "ZelInodeIndex.h"
#include "ZelKernelFacts.h"

/// What a thread's snapshot has gathered so far: all that tells of many instances at once, so that who reads them one
/// by one does not make the kernel write it anew for each. A pointer that is null is something that cannot be had.
struct ZelSnapshotFacts
{
    std::optional<ParsedKernelFacts> kernel;
    std::optional<std::shared_ptr<const ZelInodeIndex>> inodes;
    std::optional<std::shared_ptr<const std::vector<MountEntry>>> mounts;
    std::optional<std::shared_ptr<const std::string>> interfaceCounts;
    std::optional<std::shared_ptr<const std::string>> processorTimes;
    std::optional<std::shared_ptr<const ifaddrs>> addresses;
};

/// The snapshot of this thread; null outside one.
ZelSnapshotFacts* CurrentZelSnapshot();

/// What @p gather gives: gathered once for the snapshot of this thread, at each call outside one.
template <typename Fact, typename Gather>
Fact OncePerZelSnapshot(std::optional<Fact> ZelSnapshotFacts::*fact, Gather gather)
{
    ZelSnapshotFacts* snapshot = CurrentZelSnapshot();
    if (snapshot == nullptr) {
        return gather();
    }
    std::optional<Fact>& kept = snapshot->*fact;
    if (!kept) {
        kept = gather();
    }
    return *kept;
}

/// The text of a kernel's file, empty when it cannot be read; never null.
std::shared_ptr<const std::string> ReadOncePerZelSnapshot(
    std::optional<std::shared_ptr<const std::string>> ZelSnapshotFacts::*fact, const char* file);
