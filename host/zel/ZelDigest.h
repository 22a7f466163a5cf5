#pragma once

#include <string>
#include <vector>

#include "ZEL.h"
#include "ZelMd5.h"

/// The fingerprint of node definitions: it changes with anything that a client could notice. Every list is preceded by
/// its length, so that no two different definitions are the same text.
class ZelDefinitionsDigest
{
public:
    void Add(const ZEL_NodeDefinition& definition)
    {
        AddNumber(definition.node);
        AddNumber(definition.parent);
        AddNumber(definition.kind);
        for (const char* text : {definition.name, definition.path, definition.help, definition.instanceName}) {
            AddText(text);
        }
        AddNumber(definition.instanceKind);
        AddType(definition.outputType);
        AddType(definition.inputType);
        AddText(definition.unit);
    }

    std::string Digest() { return digest_.Digest(); }

private:
    void AddText(const char* text) { digest_.Add(std::string(text) + '\0'); }
    void AddNumber(std::size_t number) { digest_.Add(std::to_string(number) + '\0'); }

    // Types are nested as deep as they were written down.
    void AddType(const ZEL_Type* type)
    {
        AddNumber(type != nullptr ? 1 : 0);
        if (type == nullptr) {
            return;
        }
        AddText(type->name);
        AddNumber(type->kind);
        AddNumber(type->size);
        AddNumber(type->memberCount);
        for (std::size_t i = 0; i < type->memberCount; ++i) {
            AddMember(type->members[i]);
        }
        AddNumber(type->enumeratorCount);
        for (std::size_t i = 0; i < type->enumeratorCount; ++i) {
            AddNumber(type->enumerators[i].value);
            AddText(type->enumerators[i].name);
        }
        AddType(type->element);
    }

    void AddMember(const ZEL_TypeMember& member)
    {
        AddText(member.name);
        AddText(member.help);
        AddText(member.unit);
        AddType(member.type);
        AddNumber(member.offset);
        AddNumber(member.size);
    }

    ZelMd5 digest_;
};

inline std::string DefinitionsDigest(const std::vector<ZEL_NodeDefinition>& definitions)
{
    ZelDefinitionsDigest digest;
    for (const ZEL_NodeDefinition& definition : definitions) {
        digest.Add(definition);
    }
    return digest.Digest();
}
