#include "ZelNodes.h"

#include <list>
#include <stdexcept>

#include "ZelDigest.h"
#include "ZelProviders.h"

namespace
{
constexpr ZelNode BRANCHES[] = {
    {.path = "", .help = "system information of the kernel", .id = ZEL_NODE_root},
    {.path = "/system", .help = "the host as a whole"},
    {.path = "/system/quenfs", .help = "the in-memory file system"},
};

const ZelProvider* const PROVIDERS[] = {
    &ZEL_BOOT_PROVIDER,    &ZEL_SYSTEM_PROVIDER, &ZEL_ALERT_PROVIDER,   &ZEL_RAMDISK_PROVIDER, &ZEL_INODE_PROVIDER,
    &ZEL_CPU_PROVIDER,     &ZEL_MEMORY_PROVIDER, &ZEL_BLOCK_PROVIDER,   &ZEL_MOUNT_PROVIDER,   &ZEL_NET_PROVIDER,
    &ZEL_ADDRESS_PROVIDER, &ZEL_POWER_PROVIDER,  &ZEL_PROCESS_PROVIDER,
};

/// The nodes of all rows, put together once.
class NodeTree
{
public:
    NodeTree()
    {
        AddRows(BRANCHES);
        for (const ZelProvider* provider : PROVIDERS) {
            AddRows(*provider);
        }
    }

    const std::vector<const ZelPlacedNode*>& Nodes() const { return nodes_; }

    const ZelPlacedNode* Find(ZEL_NodeID id) const
    {
        for (const ZelPlacedNode* node : nodes_) {
            if (node->definition.node == id) {
                return node;
            }
        }
        return nullptr;
    }

private:
    void AddRows(ZelProvider rows)
    {
        for (const ZelNode& row : rows) {
            AddRow(row);
        }
    }

    void AddRow(const ZelNode& row)
    {
        const ZelPlacedNode& parent = row.id == ZEL_NODE_root ? root_ : ParentOf(row.path);
        ZelPlacedNode& node = placed_.emplace_back();
        node.row = &row;
        node.instanceKinds = parent.instanceKinds;
        node.definition = Define(row);
        node.definition.parent = parent.definition.node;
        if (row.list != nullptr) {
            node.instanceKinds.push_back(row.instanceKind);
        }
        nodes_.push_back(&node);
    }

    const ZelPlacedNode& ParentOf(const std::string& path) const
    {
        const std::string below = path.ends_with('>') ? path.substr(0, path.rfind('/')) : path;
        const std::string parent = below.substr(0, below.rfind('/'));
        for (const ZelPlacedNode* node : nodes_) {
            if (node->row->path == parent) {
                return *node;
            }
        }
        throw std::logic_error("Node without its branch: " + path);
    }

    ZEL_NodeDefinition Define(const ZelNode& row)
    {
        const std::size_t number = ZEL_NODE_firstUnnamed + nodes_.size();
        const ZEL_NodeID id = row.id == ZEL_NODE_firstUnnamed ? static_cast<ZEL_NodeID>(number) : row.id;
        const std::string whole = row.path;
        const std::string path = row.list != nullptr ? whole.substr(0, whole.rfind('/')) : whole;
        const std::string name = path.substr(path.empty() ? 0 : path.rfind('/') + 1);
        const std::string instance =
            row.list != nullptr ? whole.substr(path.size() + 2, whole.size() - path.size() - 3) : "";
        return {id,
                ZEL_NODE_root,
                KindOf(row),
                Keep(name),
                Keep(path.empty() ? "/" : path),
                row.help,
                Keep(instance),
                row.list != nullptr ? row.instanceKind : ZEL_DATA_NONE,
                row.output,
                row.input,
                row.unit};
    }

    static ZEL_NodeKind KindOf(const ZelNode& row)
    {
        if (row.list != nullptr) {
            return ZEL_KIND_INSTANCE_BRANCH;
        }
        return row.output != nullptr || row.input != nullptr ? ZEL_KIND_LEAF : ZEL_KIND_BRANCH;
    }

    const char* Keep(const std::string& text) { return texts_.emplace_back(text).c_str(); }

    ZelPlacedNode root_{};
    std::list<ZelPlacedNode> placed_;
    std::list<std::string> texts_;
    std::vector<const ZelPlacedNode*> nodes_;
};

const NodeTree& Tree()
{
    static const NodeTree TREE;
    return TREE;
}

std::string DigestOfNodes()
{
    std::vector<ZEL_NodeDefinition> definitions;
    for (const ZelPlacedNode* node : Tree().Nodes()) {
        definitions.push_back(node->definition);
    }
    return DefinitionsDigest(definitions);
}

const std::string SIGNATURE = DigestOfNodes();
}  // namespace

const char* const ZEL_DefsMD5Sum = SIGNATURE.c_str();

const ZelPlacedNode* FindZelNode(ZEL_NodeID node)
{
    return Tree().Find(node);
}

const ZEL_NodeDefinition* ZEL_LookupNode(ZEL_NodeID node)
{
    const ZelPlacedNode* found = Tree().Find(node);
    return found != nullptr ? &found->definition : nullptr;
}

const ZEL_NodeDefinition* ZEL_NodeDefinitionAt(std::size_t index)
{
    const auto& nodes = Tree().Nodes();
    return index < nodes.size() ? &nodes[index]->definition : nullptr;
}

const ZEL_NodeDefinition* ZEL_ChildAt(ZEL_NodeID branch, std::size_t index)
{
    for (const ZelPlacedNode* node : Tree().Nodes()) {
        const bool isChild = node->definition.parent == branch && node->definition.node != ZEL_NODE_root;
        if (isChild && index-- == 0) {
            return &node->definition;
        }
    }
    return nullptr;
}

const ZEL_NodeDefinition* ZEL_FindChild(ZEL_NodeID branch, const char* name)
{
    const std::string wanted = name != nullptr ? name : "";
    for (std::size_t i = 0; const ZEL_NodeDefinition* child = ZEL_ChildAt(branch, i); ++i) {
        if (child->name == wanted) {
            return child;
        }
    }
    return nullptr;
}
