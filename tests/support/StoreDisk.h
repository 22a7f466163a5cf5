#pragma once

/// Puts itself between the databases and the disk for every connection opened while it exists: the disk may fill up,
/// and waiting for a lock takes no time. One at a time.
class StoreDisk
{
public:
    StoreDisk();
    ~StoreDisk();
    StoreDisk(const StoreDisk&) = delete;
    StoreDisk& operator=(const StoreDisk&) = delete;

    /// Lets no more than @p growths writes make a file longer; all further ones find the disk full.
    void FillUpAfter(int growths);

    /// How long the databases waited for locks, had it taken any time.
    int WaitedMs() const;
};
