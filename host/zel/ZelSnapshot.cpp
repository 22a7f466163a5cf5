#include "ZelSnapshot.h"

#include "KernelFile.h"

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

std::shared_ptr<const std::string> ReadOncePerZelSnapshot(
    std::optional<std::shared_ptr<const std::string>> ZelSnapshotFacts::*fact, const char* file)
{
    return OncePerZelSnapshot(fact,
                              [=] { return std::make_shared<const std::string>(ReadKernelFile(file).value_or("")); });
}
