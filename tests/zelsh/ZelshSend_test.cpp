#include "ZelshSend.h"

#include <sys/socket.h>
#include <unistd.h>
#include <string>
#include <utility>

#include "ShellTest.h"

using namespace Zelsh;
using ::testing::AllOf;
using ::testing::Gt;
using ::testing::Lt;

/// The daemon's side of a connection whose client does not read until the test does.
class ZelshSend : public ShellTest
{
protected:
    ZelshSend()
    {
        EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0, ends_), 0);
        options.daemon = 1;
        SetClient(ends_[0]);
        testing::internal::CaptureStderr();
    }
    ~ZelshSend() override
    {
        SetClient(-1);
        close(ends_[0]);
        CloseClient();
    }

    void CloseClient() { close(std::exchange(ends_[1], -1)); }

    /// Reads away what has arrived. @return how much that was.
    std::size_t Drain() const
    {
        static char bytes[1 << 16];
        std::size_t size = 0;
        for (ssize_t length = 0; (length = recv(ends_[1], bytes, sizeof bytes, 0)) > 0;) {
            size += static_cast<std::size_t>(length);
        }
        return size;
    }

    /// The next client, on the same socket.
    void NextClient() const
    {
        shellTerminate = 0;
        SetClient(ends_[0]);
    }

    const std::string tooMuch_ = std::string(std::size_t{16} << 20, 'w');

private:
    int ends_[2] = {-1, -1};
};

TEST_F(ZelshSend, AfterAShortSendNothingGoesToThatClientAnyMore)
{
    const ssize_t sent = SendOnce(tooMuch_, true);
    EXPECT_THAT(sent, AllOf(Gt(0), Lt(static_cast<ssize_t>(tooMuch_.size()))));
    EXPECT_EQ(shellTerminate, 1);
    EXPECT_EQ(Drain(), static_cast<std::size_t>(sent));
    EXPECT_EQ(SendOnce("<EOM>", false), -1);
    EXPECT_EQ(ZELSHSendData("more", 4), -1);
    EXPECT_EQ(Drain(), 0U);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "ZELSHSend():send: Connection timed out\n");
    NextClient();
    EXPECT_EQ(SendOnce("<EOM>", false), 5);
    EXPECT_EQ(Drain(), 5U);
}

TEST_F(ZelshSend, AfterAShortSendOutputOfAnySizeIsDropped)
{
    SendOutput(tooMuch_);
    Drain();
    SendOutput(std::string(100, 'x'));
    SendOutput(std::string(100000, 'x'));
    FlushOutput();
    ZELSHError("an error");
    EXPECT_EQ(Drain(), 0U);
    testing::internal::GetCapturedStderr();
}

TEST_F(ZelshSend, AShortPieceOfBinaryModeIsTheLast)
{
    options.binary = 1;
    EXPECT_LT(ZELSHSendData(tooMuch_.data(), tooMuch_.size()), static_cast<ssize_t>(tooMuch_.size()));
    EXPECT_LT(Drain(), tooMuch_.size());
    EXPECT_EQ(ZELSHSendData("more", 4), -1);
    ZELSHError("an error");
    EXPECT_EQ(Drain(), 0U);
    testing::internal::GetCapturedStderr();
}

TEST_F(ZelshSend, WhatWasCollectedForOneClientDoesNotReachTheNext)
{
    SendOutput("pwd of the last one");
    NextClient();
    FlushOutput();
    EXPECT_EQ(Drain(), 0U);
    testing::internal::GetCapturedStderr();
}

TEST_F(ZelshSend, AFailedSendSaysWhyOnce)
{
    CloseClient();
    EXPECT_EQ(SendOnce("one", true), -1);
    EXPECT_EQ(SendOnce("two", true), -1);
    EXPECT_EQ(shellTerminate, 1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "ZELSHSend():send: Broken pipe\n");
}

TEST_F(ZelshSend, BelowLevelZeroAFailedSendIsSilent)
{
    options.verbosity = -1;
    CloseClient();
    EXPECT_EQ(SendOnce("one", true), -1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}
