#pragma once

#include <string>
#include <vector>

#include "ZelTreeReader.h"

/// What a walk from the root reads.
struct WalkResult
{
    std::size_t leaves = 0;  // read with success
    std::vector<std::string> failures = {};
};

inline void ReadLeaf(const ZEL_NodeDefinition& leaf, const std::vector<std::string>& instances, WalkResult& result)
{
    if (leaf.outputType == nullptr) {
        return;
    }
    const TreeArguments arguments(leaf, instances);
    std::string data;
    const ORV_ReturnStatus status = ZEL_GetData(leaf.node, arguments.List(), data);
    const std::size_t unit = leaf.outputType->kind == ZEL_DATA_ARRAY ? leaf.outputType->element->size : 0;
    const bool fits =
        unit != 0 ? data.size() % unit == 0 : leaf.outputType->size == 0 || data.size() == leaf.outputType->size;
    result.leaves += status == ORV_OK ? 1 : 0;
    // What ended since it was listed is not found, what this host does not have is not supported.
    const bool answered = status == ORV_NOT_FOUND || status == ORV_NOT_SUPPORTED || (status == ORV_OK && fits);
    if (!answered) {
        result.failures.push_back(std::string(leaf.path) + ": " + ORV_ReturnStatusToString(status));
    }
}

inline void Walk(const ZEL_NodeDefinition& node, const std::vector<std::string>& instances, WalkResult& result);

inline void WalkChildren(const ZEL_NodeDefinition& node, const std::vector<std::string>& instances, WalkResult& result)
{
    for (std::size_t i = 0; const ZEL_NodeDefinition* child = ZEL_ChildAt(node.node, i); ++i) {
        Walk(*child, instances, result);
    }
}

inline void WalkInstances(const ZEL_NodeDefinition& branch, const std::vector<std::string>& above, WalkResult& result)
{
    const TreeArguments arguments(branch, above);
    std::vector<std::string> names;
    const ORV_ReturnStatus status = ZEL_ListInstances(branch.node, arguments.List(), names);
    if (status != ORV_OK && status != ORV_NOT_FOUND) {
        result.failures.push_back(std::string(branch.path) + ": " + ORV_ReturnStatusToString(status));
    }
    for (const std::string& name : names) {
        std::vector<std::string> below = above;
        below.push_back(name);
        WalkChildren(branch, below, result);
    }
}

inline void Walk(const ZEL_NodeDefinition& node, const std::vector<std::string>& instances, WalkResult& result)
{
    if (node.kind == ZEL_KIND_LEAF) {
        ReadLeaf(node, instances, result);
    } else if (node.kind == ZEL_KIND_BRANCH) {
        WalkChildren(node, instances, result);
    } else {
        WalkInstances(node, instances, result);
    }
}

/// Reads every leaf of every instance below the root.
inline WalkResult WalkTree()
{
    WalkResult result;
    Walk(*ZEL_LookupNode(ZEL_NODE_root), {}, result);
    return result;
}
