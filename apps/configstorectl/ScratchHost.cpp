#include "ScratchHost.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>

#include "HostEvents.h"
#include "HostUtil.h"
#include "Output.h"
#include "StorePaths.h"
#include "StoreReader.h"

namespace fs = std::filesystem;

namespace ConfigStoreCtl
{
namespace
{
constexpr const char* FEATURES_FILE = "/etc/talvor/platform/features.json";

std::string TemporaryFolder()
{
    std::error_code reason;
    const fs::path folder = fs::temp_directory_path(reason);
    if (reason) {
        throw CommandFailure("folder for temporary files", reason.message());
    }
    return folder.string();
}
}  // namespace

ScratchFolder::ScratchFolder() : path_(TemporaryFolder() + "/configstorectl-XXXXXX")
{
    if (mkdtemp(path_.data()) == nullptr) {
        throw CommandFailure(path_, "cannot be created: " + std::generic_category().message(errno));
    }
}

ScratchFolder::~ScratchFolder()
{
    std::error_code ignored;  // nothing refers to what might be left, and nobody can be told
    fs::remove_all(path_, ignored);
}

ScratchHost::ScratchHost() : host_(HostRoot())
{
    CopyStore(DBStore::Type::ConfigStore);
    CopyStore(DBStore::Type::SchemaStore);
    if (File_Exists(DBStore::StorePath(DBStore::Type::DataFileStore))) {
        CopyStore(DBStore::Type::DataFileStore);
    }
    for (const char* file :
         {NimbConfigStore::BOOT_DOCUMENT_FILE, NimbConfigStore::HOST_CONFIGURATION_FILE, FEATURES_FILE}) {
        CopyFile(file);
    }
    SetHostRoot(folder_.Path());
}

ScratchHost::~ScratchHost()
{
    SetHostRoot(host_);
}

void ScratchHost::CopyStore(DBStore::Type type) const
{
    ThrowIfInterrupted();
    RequireStore(type);
    CallWatch watch;
    if (DBStore::CopyToRoot(type, folder_.Path()) != DBStore::SUCCESS) {
        watch.ThrowErrors(std::string(DBStore::StorePath(type)) + ": cannot be copied");
    }
}

void ScratchHost::CopyFile(const char* path) const
{
    const fs::path from = HostPath(path);
    const fs::path to = folder_.Path() + path;
    std::error_code reason;
    if (!fs::exists(from, reason)) {
        return;
    }
    fs::create_directories(to.parent_path(), reason);
    if (fs::is_regular_file(from, reason)) {
        fs::copy_file(from, to, reason);
    } else {
        fs::create_directory(to, reason);  // what cannot be read as a file cannot be read as one here either
    }
    if (reason) {
        throw CommandFailure(path, "cannot be copied: " + reason.message());
    }
}
}  // namespace ConfigStoreCtl
