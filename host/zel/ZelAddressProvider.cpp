#include <netinet/in.h>

#include <bit>
#include <cstring>
#include <memory>

#include "HostUtil.h"
#include "ZelKernelFolder.h"
#include "ZelParamList.h"
#include "ZelProviders.h"
#include "ZelSnapshot.h"
#include "ZelTypes.h"

// Addresses of network interfaces. Only the running kernel tells them: a captured /proc holds none.

namespace
{
struct Ipv4Address
{
    ZelIpv4 address;
    ZelIpv4 broadcast;
    std::uint32_t prefixLength;
};
constexpr ZEL_TypeMember IPV4_MEMBERS[] = {
    ZEL_MEMBER(Ipv4Address, address, "", "address"),
    ZEL_MEMBER(Ipv4Address, broadcast, "", "broadcast address, or the other end's; 0 when there is none"),
    ZEL_MEMBER(Ipv4Address, prefixLength, "bits", "length of the network's prefix"),
};
constexpr ZEL_Type IPV4_ADDRESS = ZelStructType<Ipv4Address>("ipv4Address", IPV4_MEMBERS);
constexpr ZEL_Type IPV4_ADDRESSES = ZelArrayType("ipv4Addresses", IPV4_ADDRESS);

enum Scope : std::uint32_t
{
    SCOPE_GLOBAL,
    SCOPE_LINK,
    SCOPE_HOST,
};
constexpr ZEL_Enumerator SCOPES[] = {{SCOPE_GLOBAL, "global"}, {SCOPE_LINK, "link"}, {SCOPE_HOST, "host"}};
constexpr ZEL_Type SCOPE = ZelEnumType("addressScope", SCOPES);

struct Ipv6Address
{
    ZelIpv6 address;
    std::uint32_t prefixLength;
    std::uint32_t scope;
};
constexpr ZEL_TypeMember IPV6_MEMBERS[] = {
    ZEL_MEMBER(Ipv6Address, address, "", "address"),
    ZEL_MEMBER(Ipv6Address, prefixLength, "bits", "length of the network's prefix"),
    ZEL_TYPED_MEMBER(Ipv6Address, scope, SCOPE, "", "how far the address reaches"),
};
constexpr ZEL_Type IPV6_ADDRESS = ZelStructType<Ipv6Address>("ipv6Address", IPV6_MEMBERS);
constexpr ZEL_Type IPV6_ADDRESSES = ZelArrayType("ipv6Addresses", IPV6_ADDRESS);

/// The bytes of the address in @p from; zeros when there is none.
template <typename Bytes>
Bytes AddressIn(const sockaddr* from, std::size_t offset)
{
    Bytes bytes = {};
    if (from != nullptr) {
        std::memcpy(&bytes, reinterpret_cast<const char*>(from) + offset, sizeof bytes);
    }
    return bytes;
}

template <typename Bytes>
std::uint32_t PrefixLength(const Bytes& mask)
{
    std::uint32_t length = 0;
    for (const std::uint8_t byte : mask.bytes) {
        length += static_cast<std::uint32_t>(std::popcount(byte));
    }
    return length;
}

std::string Ipv4Record(const ifaddrs& entry)
{
    const std::size_t offset = offsetof(sockaddr_in, sin_addr);
    const auto mask = AddressIn<ZelIpv4>(entry.ifa_netmask, offset);
    const Ipv4Address record = {AddressIn<ZelIpv4>(entry.ifa_addr, offset),
                                AddressIn<ZelIpv4>(entry.ifa_broadaddr, offset), PrefixLength(mask)};
    return ZelBytesOf(record);
}

Scope ScopeOf(const in6_addr& address)
{
    if (IN6_IS_ADDR_LOOPBACK(&address)) {
        return SCOPE_HOST;
    }
    return IN6_IS_ADDR_LINKLOCAL(&address) ? SCOPE_LINK : SCOPE_GLOBAL;
}

std::string Ipv6Record(const ifaddrs& entry)
{
    const std::size_t offset = offsetof(sockaddr_in6, sin6_addr);
    const auto mask = AddressIn<ZelIpv6>(entry.ifa_netmask, offset);
    const auto address = AddressIn<in6_addr>(entry.ifa_addr, offset);
    const Ipv6Address record = {std::bit_cast<ZelIpv6>(address), PrefixLength(mask), ScopeOf(address)};
    return ZelBytesOf(record);
}

/// An address may have a label, "eth0:1", in place of its interface's name.
bool IsOf(const ifaddrs& entry, const std::string& interface, int family)
{
    const std::string name = entry.ifa_name;
    return entry.ifa_addr != nullptr && entry.ifa_addr->sa_family == family &&
           name.substr(0, name.find(':')) == interface;
}

/// Null when the kernel does not tell.
std::shared_ptr<const ifaddrs> GatherAddresses()
{
    ifaddrs* entries = nullptr;
    return getifaddrs(&entries) == 0 ? std::shared_ptr<ifaddrs>(entries, &freeifaddrs) : nullptr;
}

ORV_ReturnStatus GetAddresses(const std::string& interface, int family, std::string (*record)(const ifaddrs&),
                              std::string& data)
{
    if (!IsRealHost()) {
        return ORV_NOT_SUPPORTED;
    }
    if (!ZelIsFileName(interface) || !ZelKernelFolder("/sys/class/net/" + interface).Has("ifindex")) {
        return ORV_NOT_FOUND;
    }
    const auto entries = OncePerZelSnapshot(&ZelSnapshotFacts::addresses, GatherAddresses);
    if (entries == nullptr) {
        return ORV_FAILURE;
    }
    for (const ifaddrs* entry = entries.get(); entry != nullptr; entry = entry->ifa_next) {
        if (IsOf(*entry, interface, family)) {
            data += record(*entry);
        }
    }
    return ORV_OK;
}

ORV_ReturnStatus GetIpv4Addresses(const ZEL_ParamList& instance, std::string& data)
{
    return GetAddresses(instance.Text(0), AF_INET, Ipv4Record, data);
}

ORV_ReturnStatus GetIpv6Addresses(const ZEL_ParamList& instance, std::string& data)
{
    return GetAddresses(instance.Text(0), AF_INET6, Ipv6Record, data);
}

constexpr ZelNode NODES[] = {
    {.path = "/net/interfaces/<interface>/ipv4Addresses",
     .help = "IPv4 addresses of the interface",
     .output = &IPV4_ADDRESSES,
     .get = GetIpv4Addresses},
    {.path = "/net/interfaces/<interface>/ipv6Addresses",
     .help = "IPv6 addresses of the interface",
     .output = &IPV6_ADDRESSES,
     .get = GetIpv6Addresses},
};
}  // namespace

constinit const ZelProvider ZEL_ADDRESS_PROVIDER = NODES;
