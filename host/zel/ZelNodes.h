#pragma once

#include <span>
#include <string>
#include <vector>

#include "ZEL.h"

/// A row of a provider: what a node is, and who answers for it. Arguments have been checked against the definition;
/// what is thrown becomes a status.
struct ZelNode
{
    /// Gives the bytes of the node's data.
    using Get = ORV_ReturnStatus (*)(const ZEL_ParamList& instance, std::string& data);
    using Set = ORV_ReturnStatus (*)(const ZEL_ParamList& instance, const ZEL_ParamList& input);
    /// Gives the names of the instances, in any order; the arguments are those of the instance branches above.
    using List = ORV_ReturnStatus (*)(const ZEL_ParamList& above, std::vector<std::string>& names);

    /// "/net/interfaces/<interface>" for an instance branch and "/net/interfaces/<interface>/stats" for what is below.
    const char* path;
    const char* help;
    ZEL_NodeID id = ZEL_NODE_firstUnnamed;  ///< unless it is named: numbered by its place
    const ZEL_Type* output = nullptr;
    Get get = nullptr;  ///< null exactly when there is no output
    const ZEL_Type* input = nullptr;
    Set set = nullptr;  ///< null exactly when there is no input
    const char* unit = "";
    List list = nullptr;  ///< of an instance branch
    ZEL_DataKind instanceKind = ZEL_DATA_TEXT;
    bool inEveryRoot = false;  ///< answers on a real host and in another root; else only kernel.json answers there
};

/// What one source file adds to the tree.
using ZelProvider = std::span<const ZelNode>;

/// A node with its definition; null for a number that is no node's.
struct ZelPlacedNode
{
    const ZelNode* row;
    ZEL_NodeDefinition definition;
    std::vector<ZEL_DataKind> instanceKinds;  ///< the arguments that its path asks for, in order
};
const ZelPlacedNode* FindZelNode(ZEL_NodeID node);
