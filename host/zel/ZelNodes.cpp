#include "ZelNodes.h"

#include <cstddef>
#include <iterator>

#include "ZelDigest.h"
#include "ZelProviders.h"

namespace
{
constexpr ZEL_Type TEXT = {"text", ZEL_DATA_TEXT, 0, nullptr, 0};
constexpr ZEL_Type BOOT_OPTION = {"bootOption", ZEL_DATA_BYTES, 4, nullptr, 0};

constexpr ZEL_TypeMember LIMIT_MEMBERS[] = {
    {"warningPercent", ZEL_DATA_INTEGER, offsetof(ZEL_MemUsageLimit, warningPercent), 8},
    {"errorPercent", ZEL_DATA_INTEGER, offsetof(ZEL_MemUsageLimit, errorPercent), 8},
};
constexpr ZEL_Type MEM_USAGE_LIMIT = {"memUsageLimit", ZEL_DATA_RECORD, sizeof(ZEL_MemUsageLimit), LIMIT_MEMBERS, 2};

constexpr ZEL_TypeMember INODE_MEMBERS[] = {
    {"inode", ZEL_DATA_INTEGER, offsetof(ZEL_InodeStats, inode), 8},
    {"sizeBytes", ZEL_DATA_INTEGER, offsetof(ZEL_InodeStats, sizeBytes), 8},
    {"tardisk", ZEL_DATA_TEXT, offsetof(ZEL_InodeStats, tardisk), sizeof(ZEL_InodeStats::tardisk)},
};
constexpr ZEL_Type INODE_STATS = {"inodeStats", ZEL_DATA_RECORD, sizeof(ZEL_InodeStats), INODE_MEMBERS, 3};

constexpr ZelNode NODES[] = {
    {{ZEL_NODE_system_bootCmdLine, "/system/bootCmdLine", &TEXT, nullptr, "boot command line of the kernel"},
     GetBootCmdLine,
     nullptr},
    {{ZEL_NODE_system_bootMAC, "/system/bootMAC", &TEXT, nullptr,
      "MAC address of the network card that the host booted from"},
     GetBootMac,
     nullptr},
    {{ZEL_NODE_system_bootOption, "/system/bootOption", &BOOT_OPTION, nullptr,
      "how the host booted; the fourth byte is nonzero for installer media"},
     GetBootOption,
     nullptr},
    {{ZEL_NODE_system_bootFsUUID, "/system/bootFsUUID", &TEXT, nullptr, "UUID of the boot file system"},
     GetBootFileSystemUuid,
     nullptr},
    {{ZEL_NODE_system_sysAlert, "/system/sysAlert", nullptr, &TEXT, "raise a system alert"}, nullptr, SetSystemAlert},
    {{ZEL_NODE_system_quenfs_ramdisks_memUsageLimit, "/system/quenfs/ramdisks/<ramdisk:text>/memUsageLimit",
      &MEM_USAGE_LIMIT, &MEM_USAGE_LIMIT, "fill levels at which a ramdisk warns and fails, in percent"},
     GetMemUsageLimit,
     SetMemUsageLimit},
    {{ZEL_NODE_system_quenfs_inodes_stats, "/system/quenfs/inodes/<inode:integer>/stats", &INODE_STATS, nullptr,
      "size and origin of one inode"},
     GetInodeStats,
     nullptr},
};

std::string DigestOfNodes()
{
    std::vector<ZEL_NodeDefinition> definitions;
    for (const ZelNode& node : NODES) {
        definitions.push_back(node.definition);
    }
    return DefinitionsDigest(definitions);
}

const std::string SIGNATURE = DigestOfNodes();
}  // namespace

const char* const ZEL_DefsMD5Sum = SIGNATURE.c_str();

const ZelNode* FindZelNode(ZEL_NodeID node)
{
    for (const ZelNode& row : NODES) {
        if (row.definition.node == node) {
            return &row;
        }
    }
    return nullptr;
}

const ZEL_NodeDefinition* ZEL_NodeDefinitionAt(std::size_t index)
{
    return index < std::size(NODES) ? &NODES[index].definition : nullptr;
}

ZEL_DataKind ZEL_PlaceholderKind(std::string_view component)
{
    if (!component.starts_with('<')) {
        return ZEL_DATA_NONE;
    }
    return component.ends_with(":integer>") ? ZEL_DATA_INTEGER : ZEL_DATA_TEXT;
}

std::vector<ZEL_DataKind> InstanceKinds(const ZEL_NodeDefinition& definition)
{
    std::vector<ZEL_DataKind> kinds;
    std::string_view rest = definition.path;
    while (!rest.empty()) {
        rest.remove_prefix(1);  // the slash
        const std::string_view component = rest.substr(0, rest.find('/'));
        if (const ZEL_DataKind kind = ZEL_PlaceholderKind(component); kind != ZEL_DATA_NONE) {
            kinds.push_back(kind);
        }
        rest.remove_prefix(component.size());
    }
    return kinds;
}
