#pragma once

#include <string>

#include "KernelFile.h"
#include "ZelKernelText.h"

/// A folder of /sys whose files hold a word or a number each. A file that is missing, or that the device refuses to
/// answer, reads as empty and 0.
class ZelKernelFolder
{
public:
    explicit ZelKernelFolder(std::string path) : path_(std::move(path) + "/") {}

    std::string Text(const char* file) const { return ZelFirstLine(ReadKernelFile(path_ + file).value_or("")); }

    template <typename Number = std::uint64_t>
    Number Value(const char* file, int base = 10) const
    {
        return ZelNumber<Number>(Text(file), base);
    }

    bool Flag(const char* file) const { return Value(file) != 0; }
    bool Has(const char* file) const { return ReadKernelFile(path_ + file).has_value(); }

private:
    std::string path_;
};

/// True when an instance's name may become a file's name.
inline bool ZelIsFileName(const std::string& name)
{
    return !name.empty() && name != "." && name != ".." && name.find('/') == std::string::npos;
}
