#pragma once

#include <cstdlib>
#include <filesystem>

#include "DesiredTest.h"

/// Plans on a host whose scratch copies go to a folder of their own, which every test leaves empty.
class PlanTest : public DesiredTest
{
protected:
    void SetUp() override
    {
        DesiredTest::SetUp();
        const char* before = std::getenv("TMPDIR");
        temporaryBefore_ = before != nullptr ? before : "";
        temporary_ = Host().Root() + "-scratch";
        std::filesystem::create_directory(temporary_);
        ASSERT_EQ(setenv("TMPDIR", temporary_.c_str(), 1), 0);
    }

    void TearDown() override
    {
        EXPECT_TRUE(std::filesystem::is_empty(temporary_));
        if (temporaryBefore_.empty()) {
            unsetenv("TMPDIR");
        } else {
            setenv("TMPDIR", temporaryBefore_.c_str(), 1);
        }
        std::filesystem::remove_all(temporary_);
    }

    const std::string& Temporary() const { return temporary_; }

    /// Boots the host as it does after a power cut: from a backup of the stores.
    void BackUpAndBoot()
    {
        ASSERT_EQ(Run({"store", "backup"}).status, 0);
        Host().Remove("/etc/talvor/configstore/current-store-1");
        const Ran ran = Run({"boot", "load"});
        ASSERT_EQ(ran.status, 0) << ran.errors;
    }

private:
    std::string temporaryBefore_;
    std::string temporary_;
};
