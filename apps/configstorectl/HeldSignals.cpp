#include "HeldSignals.h"

#include <stdexcept>

namespace ConfigStoreCtl
{
HeldSignals::HeldSignals(std::initializer_list<int> signals)
{
    sigemptyset(&held_);
    for (const int signal : signals) {
        sigaddset(&held_, signal);
    }
    pthread_sigmask(SIG_BLOCK, &held_, &before_);
}

HeldSignals::~HeldSignals()
{
    pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

void HeldSignals::ThrowIfOneWaits() const
{
    sigset_t waiting;
    sigpending(&waiting);
    sigset_t held;
    sigandset(&held, &waiting, &held_);
    if (sigisemptyset(&held) == 0) {
        throw std::runtime_error("interrupted");
    }
}
}  // namespace ConfigStoreCtl
