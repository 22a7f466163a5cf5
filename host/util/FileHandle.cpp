#include "FileHandle.h"

#include <sys/stat.h>

/// How much was written; errno tells why not all of it.
std::size_t FileHandle::Write(std::string_view text) const
{
    std::size_t done = 0;
    while (done < text.size()) {
        const ssize_t written = write(descriptor_, text.data() + done, text.size() - done);
        if (written == 0) {
            errno = EIO;  // nothing else tells why, and asking again would never end
            break;
        }
        if (written < 0 && errno != EINTR) {
            break;
        }
        done += written > 0 ? static_cast<std::size_t>(written) : 0;
    }
    return done;
}

bool FileHandle::AppendAll(std::string_view text) const
{
    const std::size_t written = Write(text);
    if (written == text.size()) {
        return true;
    }
    const int reason = errno;
    (void)TakeBack(written);  // there is no better place to report it than what is full
    errno = reason;
    return false;
}

/// Nothing that somebody else has written behind it is cut.
bool FileHandle::TakeBack(std::size_t written) const
{
    struct stat status = {};
    const off_t end = lseek(descriptor_, 0, SEEK_CUR);
    const off_t begin = end - static_cast<off_t>(written);
    // The place of the next write goes back too: the standard error stream need not be open for appending.
    return written > 0 && fstat(descriptor_, &status) == 0 && S_ISREG(status.st_mode) && status.st_size == end &&
           ftruncate(descriptor_, begin) == 0 && lseek(descriptor_, begin, SEEK_SET) == begin;
}
