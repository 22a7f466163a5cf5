#include "KernelFile.h"
#include "ZelKernelText.h"
#include "ZelProviders.h"
#include "ZelTypes.h"

namespace
{
struct MemoryStats
{
    std::uint64_t totalBytes;
    std::uint64_t freeBytes;
    std::uint64_t availableBytes;
    std::uint64_t bufferBytes;
    std::uint64_t cachedBytes;
    std::uint64_t sharedBytes;
    std::uint64_t slabBytes;
    std::uint64_t dirtyBytes;
    std::uint64_t swapTotalBytes;
    std::uint64_t swapFreeBytes;
    std::uint64_t hugePages;
    std::uint64_t hugePagesFree;
    std::uint64_t hugePageBytes;
};
constexpr ZEL_TypeMember STATS_MEMBERS[] = {
    ZEL_MEMBER(MemoryStats, totalBytes, "bytes", "memory that the kernel manages"),
    ZEL_MEMBER(MemoryStats, freeBytes, "bytes", "memory that nothing uses"),
    ZEL_MEMBER(MemoryStats, availableBytes, "bytes", "memory that programs could get without swapping"),
    ZEL_MEMBER(MemoryStats, bufferBytes, "bytes", "buffers of block devices"),
    ZEL_MEMBER(MemoryStats, cachedBytes, "bytes", "contents of files"),
    ZEL_MEMBER(MemoryStats, sharedBytes, "bytes", "memory-backed file systems and shared memory"),
    ZEL_MEMBER(MemoryStats, slabBytes, "bytes", "the kernel's own objects"),
    ZEL_MEMBER(MemoryStats, dirtyBytes, "bytes", "contents that wait to be written"),
    ZEL_MEMBER(MemoryStats, swapTotalBytes, "bytes", "swap space"),
    ZEL_MEMBER(MemoryStats, swapFreeBytes, "bytes", "swap space that nothing uses"),
    ZEL_MEMBER(MemoryStats, hugePages, "", "huge pages set aside"),
    ZEL_MEMBER(MemoryStats, hugePagesFree, "", "huge pages that nothing uses"),
    ZEL_MEMBER(MemoryStats, hugePageBytes, "bytes", "size of a huge page"),
};
constexpr ZEL_Type STATS = ZelStructType<MemoryStats>("memoryStats", STATS_MEMBERS);

ORV_ReturnStatus GetMemoryStats(const ZEL_ParamList&, std::string& data)
{
    const std::optional<std::string> text = ReadKernelFile("/proc/meminfo");
    if (!text) {
        return ORV_NOT_SUPPORTED;
    }
    const auto count = [&](const char* key) { return ZelNumber(ZelValueOf(*text, key)); };
    const auto bytes = [&](const char* key) { return count(key) * 1024; };
    const MemoryStats stats = {.totalBytes = bytes("MemTotal"),
                               .freeBytes = bytes("MemFree"),
                               .availableBytes = bytes("MemAvailable"),
                               .bufferBytes = bytes("Buffers"),
                               .cachedBytes = bytes("Cached"),
                               .sharedBytes = bytes("Shmem"),
                               .slabBytes = bytes("Slab"),
                               .dirtyBytes = bytes("Dirty"),
                               .swapTotalBytes = bytes("SwapTotal"),
                               .swapFreeBytes = bytes("SwapFree"),
                               .hugePages = count("HugePages_Total"),
                               .hugePagesFree = count("HugePages_Free"),
                               .hugePageBytes = bytes("Hugepagesize")};
    data = ZelBytesOf(stats);
    return ORV_OK;
}

constexpr ZelNode NODES[] = {
    {.path = "/memory", .help = "main memory"},
    {.path = "/memory/stats", .help = "use of memory", .output = &STATS, .get = GetMemoryStats},
};
}  // namespace

constinit const ZelProvider ZEL_MEMORY_PROVIDER = NODES;
