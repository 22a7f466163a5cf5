#include <sys/utsname.h>

#include "HostUtil.h"
#include "ZelKernelFolder.h"
#include "ZelProviders.h"
#include "ZelTypes.h"

namespace
{
struct Version
{
    char system[64];
    char release[64];
    char build[128];
    char machine[64];
};
constexpr ZEL_TypeMember VERSION_MEMBERS[] = {
    ZEL_MEMBER(Version, system, "", "name of the kernel"),
    ZEL_MEMBER(Version, release, "", "release of the kernel"),
    ZEL_MEMBER(Version, build, "", "number, options and time of its build"),
    ZEL_MEMBER(Version, machine, "", "architecture"),
};
constexpr ZEL_Type VERSION = ZelStructType<Version>("version", VERSION_MEMBERS);

const std::string KERNEL_FOLDER = "/proc/sys/kernel";

ORV_ReturnStatus GetUpTime(const ZEL_ParamList&, std::string& data)
{
    const std::optional<std::string> text = ReadKernelFile("/proc/uptime");
    if (!text) {
        return ORV_NOT_SUPPORTED;
    }
    data = ZelBytesOf(ZelThousandths(ZelWord(ZelWords(*text), 0)));
    return ORV_OK;
}

/// Kernels before 6.1 do not tell it in a file. The system call answers for the running kernel, and so for no capture.
std::string Architecture(const ZelKernelFolder& kernel)
{
    const std::string told = kernel.Text("arch");
    utsname names = {};
    return told.empty() && IsRealHost() && uname(&names) == 0 ? names.machine : told;
}

ORV_ReturnStatus GetVersion(const ZEL_ParamList&, std::string& data)
{
    const ZelKernelFolder kernel(KERNEL_FOLDER);
    if (!kernel.Has("osrelease")) {
        return ORV_NOT_SUPPORTED;
    }
    Version version = {};
    ZelFillText(version.system, kernel.Text("ostype"));
    ZelFillText(version.release, kernel.Text("osrelease"));
    ZelFillText(version.build, kernel.Text("version"));
    ZelFillText(version.machine, Architecture(kernel));
    data = ZelBytesOf(version);
    return ORV_OK;
}

ORV_ReturnStatus GetHostName(const ZEL_ParamList&, std::string& data)
{
    const ZelKernelFolder kernel(KERNEL_FOLDER);
    data = kernel.Text("hostname");
    return kernel.Has("hostname") ? ORV_OK : ORV_NOT_SUPPORTED;
}

constexpr ZelNode NODES[] = {
    {.path = "/system/upTime",
     .help = "time since the kernel was started",
     .output = &ZEL_UINT64,
     .get = GetUpTime,
     .unit = "ms"},
    {.path = "/system/version", .help = "version of the running kernel", .output = &VERSION, .get = GetVersion},
    {.path = "/system/hostName", .help = "name of the host", .output = &ZEL_TEXT, .get = GetHostName},
};
}  // namespace

constinit const ZelProvider ZEL_SYSTEM_PROVIDER = NODES;
