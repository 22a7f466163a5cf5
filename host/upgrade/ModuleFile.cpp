#include "ModuleFile.h"

#include <link.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <system_error>

namespace
{
template <typename Record>
bool ReadAt(std::ifstream& file, std::uint64_t offset, Record& record)
{
    file.seekg(static_cast<std::streamoff>(offset));
    return file.read(reinterpret_cast<char*>(&record), sizeof record).good();
}

bool Holds(std::uint64_t fileSize, const ElfW(Phdr) & segment)
{
    return segment.p_type != PT_LOAD ||
           (segment.p_offset <= fileSize && segment.p_filesz <= fileSize - segment.p_offset);
}
}  // namespace

bool IsWholeModule(const std::string& realPath)
{
    std::error_code ignored;
    if (!std::filesystem::is_regular_file(realPath, ignored)) {  // opening a pipe would wait for its other end
        return false;
    }
    std::ifstream file(realPath, std::ios::binary | std::ios::ate);
    const std::streamoff size = file.tellg();
    ElfW(Ehdr) header = {};
    if (size < 0 || !ReadAt(file, 0, header) || std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0) {
        return false;
    }
    for (std::uint64_t i = 0; i < header.e_phnum; ++i) {
        ElfW(Phdr) segment = {};
        if (!ReadAt(file, header.e_phoff + i * sizeof segment, segment) ||
            !Holds(static_cast<std::uint64_t>(size), segment)) {
            return false;
        }
    }
    return true;
}
