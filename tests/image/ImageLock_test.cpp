#include <dlfcn.h>
#include <gmock/gmock.h>
#include <sys/wait.h>

#include <cerrno>
#include <filesystem>
#include <functional>
#include <utility>

#include "ImageDatabase.h"
#include "ImageTest.h"

using ::testing::ElementsAre;

namespace
{
/// What the waits of the lock became, and what happened meanwhile.
std::vector<unsigned> waits;
std::function<void()> duringWait;
bool flushFails = false;
}  // namespace

// In place of the C library's: no test waits, and what happens during a wait is exact.
extern "C" unsigned int sleep(unsigned int seconds)
{
    waits.push_back(seconds);
    if (duringWait) {
        duringWait();
    }
    return 0;
}

extern "C" int fflush(FILE* file)
{
    if (flushFails && file != nullptr && file != stdout && file != stderr) {
        errno = ENOSPC;
        return EOF;
    }
    static const auto flush = reinterpret_cast<int (*)(FILE*)>(dlsym(RTLD_NEXT, "fflush"));
    return flush(file);
}

class ImageLock : public ImageTest
{
protected:
    ImageLock()
    {
        waits.clear();
        WithProfile(Brev("net-drv"));
    }
    ~ImageLock() override
    {
        duringWait = nullptr;
        flushFails = false;
    }
};

namespace
{
/// Another process that holds the lock until it is told to go.
class Holder
{
public:
    explicit Holder(const std::string& lockFile)
    {
        int ready[2];
        EXPECT_EQ(pipe(ready), 0);
        EXPECT_EQ(pipe(end_), 0);
        process_ = fork();
        if (process_ == 0) {
            const int file = open(lockFile.c_str(), O_RDWR | O_CREAT, 0644);
            char none = static_cast<char>(flock(file, LOCK_EX));
            (void)!write(ready[1], &none, 1);
            close(end_[1]);
            (void)!read(end_[0], &none, 1);
            _exit(0);
        }
        char result = 1;
        EXPECT_EQ(read(ready[0], &result, 1), 1);
        EXPECT_EQ(result, 0);
        close(ready[0]);
        close(ready[1]);
    }
    ~Holder() { Release(); }
    Holder(const Holder&) = delete;
    Holder& operator=(const Holder&) = delete;

    void Release()
    {
        if (process_ <= 0) {
            return;
        }
        close(end_[0]);
        close(end_[1]);
        EXPECT_EQ(waitpid(std::exchange(process_, 0), nullptr, 0) > 0, true);
    }

private:
    int end_[2] = {};
    pid_t process_ = 0;
};
}  // namespace

TEST_F(ImageLock, ALockHeldByAnotherProcessFailsAfterThreeAttemptsOneSecondApart)
{
    const Holder holder(Host().Real(LOCK_FILE));
    try {
        NimbImage::GetBrevIds();
        ADD_FAILURE();
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "Failed to lock imageDB.");
    }
    EXPECT_THAT(waits, ElementsAre(1u, 1u));
    EXPECT_THAT(Host().Syslog(), ElementsAre("error Cannot lock imgdb lock file /var/run/liveimgdb.pid"));
}

TEST_F(ImageLock, ALockThatIsFreedBeforeTheThirdAttemptIsTaken)
{
    Holder holder(Host().Real(LOCK_FILE));
    duringWait = [&] {
        if (waits.size() == 2) {
            holder.Release();
        }
    };
    EXPECT_EQ(NimbImage::GetBrevIds().size(), 1u);
    EXPECT_EQ(waits.size(), 2u);
}

TEST_F(ImageLock, TheLockIsHeldForTheReadersLifetimeAndNamesItsProcess)
{
    {
        NimbImage::NimbImage image;
        EXPECT_FALSE(IsUnlocked());
        EXPECT_EQ(Host().ReadFile(LOCK_FILE), std::to_string(getpid()));
        EXPECT_THAT(Host().Syslog(), ElementsAre("info Nimb imagedb locked."));
    }
    EXPECT_TRUE(IsUnlocked());
    EXPECT_THAT(Host().Syslog(), ElementsAre("info Nimb imagedb locked.", "info Nimb imagedb unlocked."));
    EXPECT_TRUE(waits.empty());
}

TEST_F(ImageLock, TheLockIsNotInheritedByCommands)
{
    NimbImage::NimbImage image;
    bool found = false;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code gone;  // the folder lists the handle that reads it
        if (std::filesystem::read_symlink(entry.path(), gone) == Host().Real(LOCK_FILE)) {
            found = true;
            EXPECT_NE(fcntl(std::stoi(entry.path().filename()), F_GETFD) & FD_CLOEXEC, 0);
        }
    }
    EXPECT_TRUE(found);
}

TEST_F(ImageLock, ALockFileThatCannotBeOpenedIsAFailureThatNamesIt)
{
    Host().MakeFolder(LOCK_FILE);
    EXPECT_THROW(NimbImage::GetNimbImage(), std::runtime_error);
    EXPECT_THAT(Host().Syslog(), ElementsAre("error Cannot open imgdb lock file /var/run/liveimgdb.pid"));
    EXPECT_TRUE(waits.empty());
}

TEST_F(ImageLock, AProcessIdThatCannotBeWrittenIsLoggedAndTheLockHolds)
{
    flushFails = true;
    NimbImage::NimbImage image;
    flushFails = false;
    EXPECT_FALSE(IsUnlocked());
    EXPECT_THAT(Host().Syslog(), ElementsAre("error Cannot write PID in imgdb lock file /var/run/liveimgdb.pid",
                                             "info Nimb imagedb locked."));
}
