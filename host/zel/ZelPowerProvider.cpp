#include "ZelKernelFolder.h"
#include "ZelParamList.h"
#include "ZelProviders.h"
#include "ZelTypes.h"

namespace
{
struct PowerPolicy
{
    char sleepStates[64];
    char memorySleep[64];
    char frequencyDriver[64];
};
constexpr ZEL_TypeMember POLICY_MEMBERS[] = {
    ZEL_MEMBER(PowerPolicy, sleepStates, "", "states that the host can be put to sleep in"),
    ZEL_MEMBER(PowerPolicy, memorySleep, "", "ways to sleep in memory, the chosen one in brackets"),
    ZEL_MEMBER(PowerPolicy, frequencyDriver, "", "driver that sets the processors' frequency"),
};
constexpr ZEL_Type POLICY = ZelStructType<PowerPolicy>("powerPolicy", POLICY_MEMBERS);

struct SupplyStatus
{
    std::uint64_t voltageMicrovolts;
    std::int64_t currentMicroamperes;
    std::int64_t powerMicrowatts;
    std::uint32_t capacityPercent;
    bool online;
    bool present;
    char kind[34];
    char status[32];
    char model[64];
};
constexpr ZEL_TypeMember STATUS_MEMBERS[] = {
    ZEL_MEMBER(SupplyStatus, voltageMicrovolts, "uV", "voltage now"),
    ZEL_MEMBER(SupplyStatus, currentMicroamperes, "uA", "current now; many a battery that discharges gives it below 0"),
    ZEL_MEMBER(SupplyStatus, powerMicrowatts, "uW", "power now; below 0 like the current"),
    ZEL_MEMBER(SupplyStatus, capacityPercent, "percent", "charge of a battery"),
    ZEL_MEMBER(SupplyStatus, online, "", "whether it supplies the host"),
    ZEL_MEMBER(SupplyStatus, present, "", "whether a battery is there"),
    ZEL_MEMBER(SupplyStatus, kind, "", "mains, battery, USB"),
    ZEL_MEMBER(SupplyStatus, status, "", "charging, discharging, full"),
    ZEL_MEMBER(SupplyStatus, model, "", "model, where the supply tells"),
};
constexpr ZEL_Type STATUS = ZelStructType<SupplyStatus>("powerSupplyStatus", STATUS_MEMBERS);

const std::string SUPPLIES_FOLDER = "/sys/class/power_supply";

ORV_ReturnStatus GetPolicy(const ZEL_ParamList&, std::string& data)
{
    const ZelKernelFolder power("/sys/power");
    PowerPolicy policy = {};
    ZelFillText(policy.sleepStates, power.Text("state"));
    ZelFillText(policy.memorySleep, power.Text("mem_sleep"));
    ZelFillText(policy.frequencyDriver, ZelKernelFolder("/sys/devices/system/cpu/cpu0/cpufreq").Text("scaling_driver"));
    data = ZelBytesOf(policy);
    const bool told = policy.sleepStates[0] != 0 || policy.memorySleep[0] != 0 || policy.frequencyDriver[0] != 0;
    return told ? ORV_OK : ORV_NOT_SUPPORTED;
}

ORV_ReturnStatus ListSupplies(const ZEL_ParamList&, std::vector<std::string>& names)
{
    names = ListKernelFolder(SUPPLIES_FOLDER);
    return ORV_OK;
}

ORV_ReturnStatus GetSupplyStatus(const ZEL_ParamList& instance, std::string& data)
{
    const std::string& name = instance.Text(0);
    const ZelKernelFolder supply(SUPPLIES_FOLDER + "/" + name);
    if (!ZelIsFileName(name) || !supply.Has("type")) {
        return ORV_NOT_FOUND;
    }
    SupplyStatus status = {.voltageMicrovolts = supply.Value("voltage_now"),
                           .currentMicroamperes = supply.Value<std::int64_t>("current_now"),
                           .powerMicrowatts = supply.Value<std::int64_t>("power_now"),
                           .capacityPercent = supply.Value<std::uint32_t>("capacity"),
                           .online = supply.Flag("online"),
                           .present = supply.Flag("present"),
                           .kind = {},
                           .status = {},
                           .model = {}};
    ZelFillText(status.kind, supply.Text("type"));
    ZelFillText(status.status, supply.Text("status"));
    ZelFillText(status.model, supply.Text("model_name"));
    data = ZelBytesOf(status);
    return ORV_OK;
}

constexpr ZelNode NODES[] = {
    {.path = "/power", .help = "power of the host"},
    {.path = "/power/policy", .help = "ways to save power", .output = &POLICY, .get = GetPolicy},
    {.path = "/power/supplies/<supply>", .help = "power supplies and batteries", .list = ListSupplies},
    {.path = "/power/supplies/<supply>/status",
     .help = "what the supply gives now",
     .output = &STATUS,
     .get = GetSupplyStatus},
};
}  // namespace

constinit const ZelProvider ZEL_POWER_PROVIDER = NODES;
