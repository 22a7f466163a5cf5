#pragma once

#include <signal.h>

#include <initializer_list>

namespace ConfigStoreCtl
{
/// Signals that wait until this goes, for the thread that made it.
class HeldSignals
{
public:
    explicit HeldSignals(std::initializer_list<int> signals);
    ~HeldSignals();
    HeldSignals(const HeldSignals&) = delete;
    HeldSignals& operator=(const HeldSignals&) = delete;

    const sigset_t& Set() const { return held_; }

    /// @throws std::runtime_error when one of them is waiting.
    void ThrowIfOneWaits() const;

private:
    sigset_t held_;
    sigset_t before_;
};
}  // namespace ConfigStoreCtl
