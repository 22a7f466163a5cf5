#pragma once

#include <functional>
#include <string>

#include "BootHost.h"

/// A host that is brought back to one state again and again, for something to run on it that loses power half way.
class PowerCutTest : public BootHostTest
{
protected:
    PowerCutTest();
    ~PowerCutTest() override;

    /// The state to come back to is that of now.
    void Save();
    void StartAnew();

    /// Runs @p call, which must give 0, in a process of its own that is killed before change number @p killBefore
    /// (from 1; 0: never). False when it was killed.
    bool Runs(const std::function<int()>& call, int killBefore);

    /// How many changes the last run made.
    int Changes() const { return *counter_; }

    /// The content of all stores, each of which must be sound.
    std::string CheckedStores();

    /// The files that were begun and have never taken the place of the one that they were to replace.
    std::vector<std::string> HalfWrittenFiles() const;

private:
    std::string Saved() const;

    int* counter_;  // shared with the processes
};
