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
    bool WriteAll(std::string_view text) const { return Write(text) == text.size(); }

    /// The same at the end of a file, which on failure does not keep a part of the text.
    bool AppendAll(std::string_view text) const;

private:
    std::size_t Write(std::string_view text) const;
    bool TakeBack(std::size_t written) const;

    int descriptor_;
};
