#pragma once

#include <string>
#include <vector>

#include "ZEL.h"

// What the facts of another root state about nodes that do not answer there themselves: the member "tree" of the
// facts, nested like the paths of the tree, instances under their names.

/// ORV_NOT_SUPPORTED when the leaf is not stated, ORV_NOT_FOUND when its instance is not, ORV_FAILURE, with a log line
/// that names the path, when what is stated is not of the leaf's type.
ORV_ReturnStatus GetStatedFact(const ZEL_NodeDefinition& leaf, const ZEL_ParamList& instance, std::string& data);

/// None when the branch is not stated.
ORV_ReturnStatus ListStatedInstances(const ZEL_NodeDefinition& branch, const ZEL_ParamList& above,
                                     std::vector<std::string>& names);
