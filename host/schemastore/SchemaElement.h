#pragma once

#include <string>

#include "Json.h"
#include "NimbSchemaStore.h"

namespace NimbSchemaStore
{
/// One element of a schema file's "data", checked and read.
struct SchemaElement
{
    std::string version;
    std::string placement;  ///< "smartnic"."schema"; empty without one
    int schemaType = 0;
    int noRestore = 1;
    bool singleton = true;
    bool dspIntegrated = false;
    bool mutableDefaultConfig = false;
    bool preserveNonUser = false;
    bool dataFile = false;
};

/// @param version  what the element's version is when it does not say.
/// @throws ConfigStoreException 2000 naming the element and the member.
SchemaElement ReadSchemaElement(const SchemaObjectId& id, const std::string& json, const std::string& version);

/// The property of an instance schema that carries "instanceId": true; empty when none does.
std::string InstanceIdPropertyOf(const NimbConfigStore::JsonValue& instanceSchema);
}  // namespace NimbSchemaStore
