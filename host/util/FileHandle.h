#pragma once

#include <unistd.h>

#include <cerrno>
#include <string_view>
#include <utility>

/// An open file, closed at the end of its life without touching errno.
class FileHandle
{
public:
    explicit FileHandle(int descriptor = -1) : descriptor_(descriptor) {}
    FileHandle(FileHandle&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
    FileHandle& operator=(FileHandle&& other) noexcept
    {
        std::swap(descriptor_, other.descriptor_);
        return *this;
    }
    ~FileHandle()
    {
        if (IsOpen()) {
            const int reason = errno;
            close(descriptor_);
            errno = reason;
        }
    }

    bool IsOpen() const { return descriptor_ >= 0; }
    int Get() const { return descriptor_; }
    int Release() { return std::exchange(descriptor_, -1); }

    /// One write for the whole text when the system takes it whole, as it does for files. False and errno on failure.
    bool WriteAll(std::string_view text) const
    {
        while (!text.empty()) {
            const ssize_t written = write(descriptor_, text.data(), text.size());
            if (written == 0) {
                errno = EIO;  // nothing else tells why, and asking again would never end
                return false;
            }
            if (written < 0 && errno != EINTR) {
                return false;
            }
            text.remove_prefix(written > 0 ? static_cast<std::size_t>(written) : 0);
        }
        return true;
    }

private:
    int descriptor_;
};
