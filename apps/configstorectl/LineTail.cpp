#include "LineTail.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <cerrno>
#include <cstring>

#include "HostUtil.h"
#include "Output.h"

namespace ConfigStoreCtl
{
namespace
{
/// An open file of the host, or none when it is not there.
class OpenFile
{
public:
    explicit OpenFile(const std::string& path) : path_(path), descriptor_(HostOpen(path, O_RDONLY))
    {
        if (descriptor_ == -1 && errno != ENOENT) {
            Fail();
        }
    }
    ~OpenFile()
    {
        if (descriptor_ != -1) {
            close(descriptor_);
        }
    }
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;

    bool IsThere() const { return descriptor_ != -1; }

    struct stat Status() const
    {
        struct stat status = {};
        if (fstat(descriptor_, &status) != 0) {
            Fail();
        }
        return status;
    }

    std::string ReadFrom(off_t offset) const
    {
        std::string text;
        char buffer[65536];
        ssize_t count = 0;
        while ((count = pread(descriptor_, buffer, sizeof buffer, offset + static_cast<off_t>(text.size()))) > 0) {
            text.append(buffer, static_cast<std::size_t>(count));
        }
        if (count < 0) {
            Fail();
        }
        return text;
    }

private:
    [[noreturn]] void Fail() const
    {
        throw CommandFailure(path_, std::string("cannot be read: ") + std::strerror(errno));
    }

    std::string path_;
    int descriptor_;
};
}  // namespace

void LineTail::SkipToEnd()
{
    const OpenFile file(path_);
    if (file.IsThere()) {
        offset_ = file.Status().st_size;
        inode_ = file.Status().st_ino;
    }
}

std::vector<std::string> LineTail::NewLines()
{
    std::vector<std::string> lines;
    const OpenFile file(path_);
    if (!file.IsThere()) {
        return lines;
    }
    const struct stat status = file.Status();
    if (status.st_ino != inode_ || status.st_size < offset_) {
        offset_ = 0;
        inode_ = status.st_ino;
    }
    const std::string text = file.ReadFrom(offset_);
    std::size_t begin = 0;
    for (std::size_t end = text.find('\n'); end != std::string::npos; end = text.find('\n', begin)) {
        lines.push_back(text.substr(begin, end - begin));
        begin = end + 1;
    }
    offset_ += static_cast<off_t>(begin);
    return lines;
}
}  // namespace ConfigStoreCtl
