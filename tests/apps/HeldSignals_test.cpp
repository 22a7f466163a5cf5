#include "HeldSignals.h"

#include <gtest/gtest.h>

#include <csignal>
#include <stdexcept>

using ConfigStoreCtl::HeldSignals;

namespace
{
void Take(const HeldSignals& signals)
{
    int taken = 0;
    (void)sigwait(&signals.Set(), &taken);
}

bool IsBlocked(int signal)
{
    sigset_t blocked;
    pthread_sigmask(SIG_BLOCK, nullptr, &blocked);
    return sigismember(&blocked, signal) == 1;
}
}  // namespace

TEST(HeldSignals, WaitUntilTheyAreAskedFor)
{
    const HeldSignals signals{SIGUSR1, SIGUSR2};
    EXPECT_NO_THROW(signals.ThrowIfOneWaits());
    std::raise(SIGUSR2);
    EXPECT_THROW(signals.ThrowIfOneWaits(), std::runtime_error);
    Take(signals);
    EXPECT_NO_THROW(signals.ThrowIfOneWaits());
}

TEST(HeldSignals, OfSomebodyElseAreNotTheirs)
{
    const HeldSignals others{SIGUSR1};
    const HeldSignals signals{SIGUSR2};
    std::raise(SIGUSR1);
    EXPECT_NO_THROW(signals.ThrowIfOneWaits());
    Take(others);
}

TEST(HeldSignals, AreLetGoAsTheyWere)
{
    const HeldSignals outer{SIGUSR1};
    {
        const HeldSignals inner{SIGUSR1, SIGUSR2};
        EXPECT_TRUE(IsBlocked(SIGUSR2));
    }
    EXPECT_TRUE(IsBlocked(SIGUSR1));
    EXPECT_FALSE(IsBlocked(SIGUSR2));
}
