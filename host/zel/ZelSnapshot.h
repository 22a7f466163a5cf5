#pragma once

#include <memory>
#include <optional>

#include "ZelInodeIndex.h"
#include "ZelKernelFacts.h"

/// What a thread's snapshot has gathered so far.
struct ZelSnapshotFacts
{
    std::optional<ParsedKernelFacts> kernel;
    std::shared_ptr<const ZelInodeIndex> inodes;
};

/// The snapshot of this thread; null outside one.
ZelSnapshotFacts* CurrentZelSnapshot();
