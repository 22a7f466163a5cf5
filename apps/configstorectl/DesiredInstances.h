#pragma once

#include <string>
#include <vector>

#include "JsonChanges.h"
#include "NimbSchemaStore.h"

namespace ConfigStoreCtl
{
/// One value that a desired document holds.
struct DesiredInstance
{
    NimbSchemaStore::SchemaObjectId object;
    std::string text;        ///< as it is staged
    MemberChanges filledIn;  ///< what staging wrote into it
};

/// The instances of a document, in its order. An object whose default it deletes has one, the text "DELETE_DEFAULT".
/// @param given  the document before it was staged.
/// @param staged  the same document afterwards.
/// @param profile  the document may stand below a root member "profile".
std::vector<DesiredInstance> InstancesOf(const NimbConfigStore::JsonDocument& given,
                                         const NimbConfigStore::JsonDocument& staged,
                                         const NimbSchemaStore::SchemaObjectCache& cache, bool profile);
}  // namespace ConfigStoreCtl
