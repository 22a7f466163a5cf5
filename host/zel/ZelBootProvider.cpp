#include <sys/stat.h>

#include <charconv>
#include <optional>

#include "CSLogger.h"
#include "HostUtil.h"
#include "KernelFile.h"
#include "MountTable.h"
#include "ZelBootWords.h"
#include "ZelDeviceNames.h"
#include "ZelKernelFacts.h"
#include "ZelProviders.h"
#include "ZelTypes.h"

namespace
{
std::optional<std::string> KernelCommandLine()
{
    std::optional<std::string> text = ReadKernelFile("/proc/cmdline");
    if (text && text->ends_with('\n')) {
        text->pop_back();
    }
    return text;
}

ORV_ReturnStatus GiveFact(const char* name, std::string& data)
{
    const KernelFacts facts = LoadKernelFacts();
    if (facts == nullptr) {
        return ORV_FAILURE;
    }
    const auto fact = facts->FindMember(name);
    if (fact == facts->MemberEnd() || !fact->value.IsString()) {
        CSLogger::Log(CSLogger::ERROR, "The kernel's facts in %s give no text %s", KERNEL_FACTS_FILE, name);
        return ORV_FAILURE;
    }
    data.assign(fact->value.GetString(), fact->value.GetStringLength());
    return ORV_OK;
}

/// The answer that @p read takes from the kernel's command line, or the fact @p name inside another root.
template <typename Read>
ORV_ReturnStatus GiveOfCommandLine(const char* name, Read read, std::string& data)
{
    if (!IsRealHost()) {
        return GiveFact(name, data);
    }
    const std::optional<std::string> commandLine = KernelCommandLine();
    if (!commandLine) {
        return ORV_FAILURE;
    }
    data = read(*commandLine);
    return ORV_OK;
}

/// "00000001" becomes the four bytes 0, 0, 0, 1.
bool BytesOfHex(const std::string& hex, std::string& bytes)
{
    std::uint32_t number = 0;
    const char* end = hex.data() + hex.size();
    const auto [stop, error] = std::from_chars(hex.data(), end, number, 16);
    if (hex.size() != 8 || error != std::errc() || stop != end) {
        return false;
    }
    for (int shift = 24; shift >= 0; shift -= 8) {
        bytes += static_cast<char>(number >> shift);
    }
    return true;
}

/// The name under which the system lists what is mounted among the file systems with a UUID.
std::string UuidOf(const MountEntry& entry)
{
    const std::string folder = HostPath("/dev/disk/by-uuid");
    // The name of the source need not stand under /dev: that of a root which the kernel mounted itself is /dev/root.
    std::string uuid = NameOfDevice(folder, DeviceNumber(entry.device));
    struct stat source = {};
    if (!uuid.empty() || !entry.source.starts_with("/dev/") || stat(HostPath(entry.source).c_str(), &source) != 0) {
        return uuid;
    }
    // File systems that may span devices have a number of their own.
    return S_ISBLK(source.st_mode) ? NameOfDevice(folder, source.st_rdev) : "";
}

ORV_ReturnStatus GetBootCmdLine(const ZEL_ParamList&, std::string& data)
{
    return GiveOfCommandLine(
        "bootCmdLine", [](const std::string& commandLine) { return commandLine; }, data);
}

ORV_ReturnStatus GetBootMac(const ZEL_ParamList&, std::string& data)
{
    return GiveOfCommandLine("bootMAC", BootMacOf, data);
}

ORV_ReturnStatus GetBootOption(const ZEL_ParamList&, std::string& data)
{
    if (IsRealHost()) {
        return GiveOfCommandLine("bootOption", BootOptionOf, data);
    }
    std::string hex;
    if (const ORV_ReturnStatus status = GiveFact("bootOption", hex); status != ORV_OK) {
        return status;
    }
    if (!BytesOfHex(hex, data)) {
        CSLogger::Log(CSLogger::ERROR, "The kernel's facts in %s: bootOption is not eight hexadecimal digits",
                      KERNEL_FACTS_FILE);
        return ORV_FAILURE;
    }
    return ORV_OK;
}

ORV_ReturnStatus GetBootFileSystemUuid(const ZEL_ParamList&, std::string& data)
{
    if (!IsRealHost()) {
        return GiveFact("bootFsUUID", data);
    }
    const std::optional<std::string> text = ReadKernelFile(MOUNT_TABLE_FILE);
    if (!text) {
        return ORV_FAILURE;
    }
    const std::vector<MountEntry> mounts = ParseMountTable(*text);
    // A boot file system of its own goes before the one that everything else is on.
    for (const char* mountPoint : {"/boot", "/"}) {
        const MountEntry* entry = FindMount(mounts, mountPoint);
        data = entry != nullptr ? UuidOf(*entry) : "";
        if (!data.empty()) {
            break;
        }
    }
    return ORV_OK;  // without a UUID it is the empty text, with which the host boots as from a changed bank
}

constexpr ZEL_Type BOOT_OPTION = ZelPlainType("bootOption", ZEL_DATA_BYTES, 4);

constexpr ZelNode NODES[] = {
    {.path = "/system/bootCmdLine",
     .help = "boot command line of the kernel",
     .id = ZEL_NODE_system_bootCmdLine,
     .output = &ZEL_TEXT,
     .get = GetBootCmdLine,
     .inEveryRoot = true},
    {.path = "/system/bootMAC",
     .help = "MAC address of the network card that the host booted from",
     .id = ZEL_NODE_system_bootMAC,
     .output = &ZEL_TEXT,
     .get = GetBootMac,
     .inEveryRoot = true},
    {.path = "/system/bootOption",
     .help = "how the host booted; the fourth byte is nonzero for installer media",
     .id = ZEL_NODE_system_bootOption,
     .output = &BOOT_OPTION,
     .get = GetBootOption,
     .inEveryRoot = true},
    {.path = "/system/bootFsUUID",
     .help = "UUID of the boot file system",
     .id = ZEL_NODE_system_bootFsUUID,
     .output = &ZEL_TEXT,
     .get = GetBootFileSystemUuid,
     .inEveryRoot = true},
};
}  // namespace

constinit const ZelProvider ZEL_BOOT_PROVIDER = NODES;
