#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "ZEL.h"

/// A row of the node table: what a node is, and who answers for it.
struct ZelNode
{
    using Get = ORV_ReturnStatus (*)(const ZEL_ParamList& instance, std::string& data);
    using Set = ORV_ReturnStatus (*)(const ZEL_ParamList& instance, const ZEL_ParamList& input);

    ZEL_NodeDefinition definition;
    Get get;  // null exactly when the definition has no output
    Set set;  // null exactly when the definition has no input
};

/// The row of @p node, or null.
const ZelNode* FindZelNode(ZEL_NodeID node);

/// The kinds of instance argument that the node's path asks for, in order.
std::vector<ZEL_DataKind> InstanceKinds(const ZEL_NodeDefinition& definition);
