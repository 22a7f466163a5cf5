#pragma once

#include <string>

#include "DBStore.h"
#include "HeldSignals.h"

namespace ConfigStoreCtl
{
/// A folder of its own for the temporary files of this machine, readable by its owner alone.
class ScratchFolder
{
public:
    ScratchFolder();
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    const std::string& Path() const { return path_; }

private:
    std::string path_;
};

/// A copy of the host's stores, and of the files that staging and applying read, in a root of its own that everything
/// works on while this exists. The host itself is only read. No connection may be kept past the end.
class ScratchHost
{
public:
    /// @throws CommandFailure naming what cannot be copied.
    ScratchHost();
    ~ScratchHost();
    ScratchHost(const ScratchHost&) = delete;
    ScratchHost& operator=(const ScratchHost&) = delete;

    void ThrowIfInterrupted() const { signals_.ThrowIfOneWaits(); }

private:
    void CopyStore(DBStore::Type type) const;
    void CopyFile(const char* path) const;

    /// Signals that end the program: what it made is removed first.
    const HeldSignals signals_{SIGHUP, SIGINT, SIGTERM};
    const ScratchFolder folder_;
    const std::string host_;
};
}  // namespace ConfigStoreCtl
