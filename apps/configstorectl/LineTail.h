#pragma once

#include <sys/types.h>
#include <string>
#include <vector>

namespace ConfigStoreCtl
{
/// Reads the lines of a growing file of the host, each once. A file that is not there has no lines yet; one that was
/// replaced or cut short is read from its beginning.
class LineTail
{
public:
    explicit LineTail(std::string path) : path_(std::move(path)) {}

    /// From now on only what is added.
    void SkipToEnd();

    /// The complete lines since the last call. @throws CommandFailure when the file is there but cannot be read.
    std::vector<std::string> NewLines();

private:
    std::string path_;
    off_t offset_ = 0;
    ino_t inode_ = 0;
};
}  // namespace ConfigStoreCtl
