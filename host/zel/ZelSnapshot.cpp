#include "ZelSnapshot.h"

namespace
{
thread_local int depth = 0;
thread_local ZelSnapshotFacts facts;
}  // namespace

ZEL_Snapshot::ZEL_Snapshot()
{
    ++depth;
}

ZEL_Snapshot::~ZEL_Snapshot()
{
    if (--depth == 0) {
        facts = {};
    }
}

ZelSnapshotFacts* CurrentZelSnapshot()
{
    return depth > 0 ? &facts : nullptr;
}
