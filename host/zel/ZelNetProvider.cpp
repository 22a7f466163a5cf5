#include <net/if.h>

#include <algorithm>
#include <cstring>

#include "ZelHex.h"
#include "ZelKernelFolder.h"
#include "ZelParamList.h"
#include "ZelProviders.h"
#include "ZelSnapshot.h"
#include "ZelTypes.h"

namespace
{
// The kernel's states of RFC 2863, in the words of /sys.
constexpr ZEL_Enumerator OPERATION_STATES[] = {{0, "unknown"}, {1, "notpresent"}, {2, "down"}, {3, "lowerlayerdown"},
                                               {4, "testing"}, {5, "dormant"},    {6, "up"}};
constexpr ZEL_Type OPERATION_STATE = ZelEnumType("operationState", OPERATION_STATES);
constexpr ZEL_Enumerator DUPLEXES[] = {{0, "unknown"}, {1, "half"}, {2, "full"}};
constexpr ZEL_Type DUPLEX = ZelEnumType("duplex", DUPLEXES);

struct InterfaceConfig
{
    std::uint32_t index;
    std::uint32_t mtu;
    std::uint32_t operationState;
    std::uint32_t duplex;
    std::uint32_t speed;
    std::uint16_t hardwareType;
    ZelMac mac;
    bool up;
    bool carrier;
    bool loopback;
    bool promiscuous;
};
constexpr ZEL_TypeMember CONFIG_MEMBERS[] = {
    ZEL_MEMBER(InterfaceConfig, index, "", "number of the interface"),
    ZEL_MEMBER(InterfaceConfig, mtu, "bytes", "largest packet"),
    ZEL_TYPED_MEMBER(InterfaceConfig, operationState, OPERATION_STATE, "", "whether it can pass packets"),
    ZEL_TYPED_MEMBER(InterfaceConfig, duplex, DUPLEX, "", "whether it sends and receives at once"),
    ZEL_MEMBER(InterfaceConfig, speed, "Mbit/s", "speed of the link; 0 when it is not known"),
    ZEL_MEMBER(InterfaceConfig, hardwareType, "", "kind of hardware: 1 Ethernet, 772 loopback"),
    ZEL_MEMBER(InterfaceConfig, mac, "", "hardware address; 0 when it has none of that form"),
    ZEL_MEMBER(InterfaceConfig, up, "", "whether the administrator wants it up"),
    ZEL_MEMBER(InterfaceConfig, carrier, "", "whether the link is there"),
    ZEL_MEMBER(InterfaceConfig, loopback, "", "whether it leads back to the host"),
    ZEL_MEMBER(InterfaceConfig, promiscuous, "", "whether it takes packets for others"),
};
constexpr ZEL_Type CONFIG = ZelStructType<InterfaceConfig>("interfaceConfig", CONFIG_MEMBERS);

struct InterfaceStats
{
    std::uint64_t receivedBytes;
    std::uint64_t receivedPackets;
    std::uint64_t receiveErrors;
    std::uint64_t receiveDropped;
    std::uint64_t multicast;
    std::uint64_t sentBytes;
    std::uint64_t sentPackets;
    std::uint64_t sendErrors;
    std::uint64_t sendDropped;
    std::uint64_t collisions;
};
constexpr ZEL_TypeMember STATS_MEMBERS[] = {
    ZEL_MEMBER(InterfaceStats, receivedBytes, "bytes", "data received"),
    ZEL_MEMBER(InterfaceStats, receivedPackets, "", "packets received"),
    ZEL_MEMBER(InterfaceStats, receiveErrors, "", "packets received in error"),
    ZEL_MEMBER(InterfaceStats, receiveDropped, "", "packets received and dropped"),
    ZEL_MEMBER(InterfaceStats, multicast, "", "multicast packets received"),
    ZEL_MEMBER(InterfaceStats, sentBytes, "bytes", "data sent"),
    ZEL_MEMBER(InterfaceStats, sentPackets, "", "packets sent"),
    ZEL_MEMBER(InterfaceStats, sendErrors, "", "packets that could not be sent"),
    ZEL_MEMBER(InterfaceStats, sendDropped, "", "packets dropped before sending"),
    ZEL_MEMBER(InterfaceStats, collisions, "", "collisions while sending"),
};
constexpr ZEL_Type STATS = ZelStructType<InterfaceStats>("interfaceStats", STATS_MEMBERS);

std::shared_ptr<const std::string> InterfaceCounts()
{
    return ReadOncePerZelSnapshot(&ZelSnapshotFacts::interfaceCounts, "/proc/net/dev");
}

/// The lines "NAME: COUNT..." of the file, below its two of headings.
std::vector<std::string_view> InterfaceLines(std::string_view text)
{
    std::vector<std::string_view> lines;
    while (!text.empty()) {
        const std::string_view line = text.substr(0, text.find('\n'));
        if (line.find(':') != std::string_view::npos) {
            lines.push_back(line);
        }
        text.remove_prefix(std::min(line.size() + 1, text.size()));
    }
    return lines;
}

std::string InterfaceName(std::string_view line)
{
    return ZelFirstLine(line.substr(0, line.find(':')));
}

ORV_ReturnStatus ListInterfaces(const ZEL_ParamList&, std::vector<std::string>& names)
{
    const std::shared_ptr<const std::string> text = InterfaceCounts();
    for (const std::string_view line : InterfaceLines(*text)) {
        names.push_back(InterfaceName(line));
    }
    return ORV_OK;
}

template <std::size_t N>
std::uint32_t ValueNamed(const std::string& name, const ZEL_Enumerator (&values)[N])
{
    const auto isNamed = [&](const ZEL_Enumerator& value) { return name == value.name; };
    const ZEL_Enumerator* found = std::find_if(std::begin(values), std::end(values), isNamed);
    return found != std::end(values) ? found->value : 0;
}

/// Hardware addresses of other lengths exist.
ZelMac MacOf(const std::string& text)
{
    ZelMac mac = {};
    std::string bytes;
    if (ZelBytesOfHex(text, ':', bytes) && bytes.size() == sizeof mac.bytes) {
        std::memcpy(mac.bytes, bytes.data(), bytes.size());
    }
    return mac;
}

InterfaceConfig ConfigOf(const ZelKernelFolder& interface)
{
    const auto flags = interface.Value<std::uint32_t>("flags", 16);
    return {.index = interface.Value<std::uint32_t>("ifindex"),
            .mtu = interface.Value<std::uint32_t>("mtu"),
            .operationState = ValueNamed(interface.Text("operstate"), OPERATION_STATES),
            .duplex = ValueNamed(interface.Text("duplex"), DUPLEXES),
            .speed = static_cast<std::uint32_t>(std::max(interface.Value<std::int32_t>("speed"), 0)),  // -1: not known
            .hardwareType = interface.Value<std::uint16_t>("type"),
            .mac = MacOf(interface.Text("address")),
            .up = (flags & IFF_UP) != 0,
            .carrier = interface.Flag("carrier"),
            .loopback = (flags & IFF_LOOPBACK) != 0,
            .promiscuous = (flags & IFF_PROMISC) != 0};
}

ORV_ReturnStatus GetInterfaceConfig(const ZEL_ParamList& instance, std::string& data)
{
    const std::string& name = instance.Text(0);
    const ZelKernelFolder interface("/sys/class/net/" + name);
    if (!ZelIsFileName(name) || !interface.Has("ifindex")) {
        return ORV_NOT_FOUND;
    }
    data = ZelBytesOf(ConfigOf(interface));
    return ORV_OK;
}

ORV_ReturnStatus GetInterfaceStats(const ZEL_ParamList& instance, std::string& data)
{
    const std::shared_ptr<const std::string> text = InterfaceCounts();
    for (const std::string_view line : InterfaceLines(*text)) {
        if (InterfaceName(line) != instance.Text(0)) {
            continue;
        }
        const std::vector<std::string_view> words = ZelWords(line.substr(line.find(':') + 1));
        const auto count = [&](std::size_t word) { return ZelNumber(ZelWord(words, word)); };
        const InterfaceStats stats = {count(0), count(1), count(2),  count(3),  count(7),
                                      count(8), count(9), count(10), count(11), count(13)};
        data = ZelBytesOf(stats);
        return ORV_OK;
    }
    return ORV_NOT_FOUND;
}

constexpr ZelNode NODES[] = {
    {.path = "/net", .help = "networking"},
    {.path = "/net/interfaces/<interface>", .help = "network interfaces", .list = ListInterfaces},
    {.path = "/net/interfaces/<interface>/config",
     .help = "how the interface is set up",
     .output = &CONFIG,
     .get = GetInterfaceConfig},
    {.path = "/net/interfaces/<interface>/stats",
     .help = "packets since the interface was made",
     .output = &STATS,
     .get = GetInterfaceStats},
};
}  // namespace

constinit const ZelProvider ZEL_NET_PROVIDER = NODES;
