#include "PowerCut.h"

#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>

#include "FileOperations.h"
#include "HostUtil.h"

namespace fs = std::filesystem;

PowerCutTest::PowerCutTest()
    : counter_(static_cast<int*>(mmap(nullptr, sizeof(int), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0)))
{}

PowerCutTest::~PowerCutTest()
{
    munmap(counter_, sizeof(int));
    fs::remove_all(Saved());
}

std::string PowerCutTest::Saved() const
{
    return HostRoot() + ".saved";
}

void PowerCutTest::Save()
{
    fs::copy(HostRoot(), Saved(), fs::copy_options::recursive);
}

void PowerCutTest::StartAnew()
{
    fs::remove_all(HostRoot());
    fs::copy(Saved(), HostRoot(), fs::copy_options::recursive);
}

bool PowerCutTest::Runs(const std::function<int()>& call, int killBefore)
{
    const pid_t child = fork();
    if (child == 0) {
        FileOperations::Watch(counter_, killBefore);
        _exit(call());
    }
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFSIGNALED(status) ? WTERMSIG(status) == SIGKILL : WEXITSTATUS(status) == 0);
    return !WIFSIGNALED(status);
}

std::string PowerCutTest::CheckedStores()
{
    std::string content;
    for (const auto type : {DBStore::Type::ConfigStore, DBStore::Type::DataFileStore, DBStore::Type::SchemaStore}) {
        content += DumpStore(type);  // first: the check, which writes nothing, does not undo what a cut left half done
        EXPECT_TRUE(DBStore::Check(DBStore::StorePath(type))) << DBStore::StorePath(type);
    }
    return content;
}

std::vector<std::string> PowerCutTest::HalfWrittenFiles() const
{
    std::vector<std::string> files;
    for (const auto& entry : fs::recursive_directory_iterator(HostRoot())) {
        const std::string name = entry.path().filename();
        if (name.starts_with(".new-") || name.ends_with(".restored")) {
            files.push_back(entry.path());
        }
    }
    return files;
}
