#pragma once

#include <string>
#include <vector>

#include "ZEL.h"
#include "ZelMd5.h"

/// The fingerprint of node definitions: it changes with anything that a client could notice.
inline std::string DefinitionsDigest(const std::vector<ZEL_NodeDefinition>& definitions)
{
    ZelMd5 digest;
    const auto addText = [&digest](const char* text) { digest.Add(std::string(text) + '\0'); };
    const auto addNumber = [&digest](std::size_t number) { digest.Add(std::to_string(number) + '\0'); };
    const auto addType = [&](const ZEL_Type* type) {
        addText(type != nullptr ? type->name : "-");
        addNumber(type != nullptr ? type->kind : ZEL_DATA_NONE);
        addNumber(type != nullptr ? type->size : 0);
        for (std::size_t i = 0; type != nullptr && i < type->memberCount; ++i) {
            addText(type->members[i].name);
            addNumber(type->members[i].kind);
            addNumber(type->members[i].offset);
            addNumber(type->members[i].size);
        }
    };
    for (const ZEL_NodeDefinition& definition : definitions) {
        addNumber(definition.node);
        addText(definition.path);
        addType(definition.output);
        addType(definition.input);
        addText(definition.help);
    }
    return digest.Digest();
}
