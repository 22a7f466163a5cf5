#pragma once

#include <climits>

/// Puts itself between the databases and the disk for every connection opened while it exists: the disk may fill up,
/// and waiting for a lock takes no time. One at a time.
class StoreDisk
{
public:
    StoreDisk();
    ~StoreDisk();
    StoreDisk(const StoreDisk&) = delete;
    StoreDisk& operator=(const StoreDisk&) = delete;

    /// Lets @p growths writes make a file longer; the next @p refusals find the disk full, then there is room again.
    void FillUpAfter(int growths, int refusals = ALL);
    static constexpr int ALL = INT_MAX;

    /// How long the databases waited for locks, had it taken any time.
    int WaitedMs() const;
};
