#pragma once

#include <arpa/inet.h>

#include <cstring>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "ZEL.h"

/// Instance arguments for the length of a call, of the kinds that the path's instance branches ask for.
class TreeArguments
{
public:
    TreeArguments(const ZEL_NodeDefinition& node, const std::vector<std::string>& names)
        : list_(ZEL_ParamListCreate(1, static_cast<int>(names.size())))
    {
        std::vector<ZEL_DataKind> kinds;
        for (const ZEL_NodeDefinition* at = &node; at->node != ZEL_NODE_root;) {
            at = ZEL_LookupNode(at->parent);
            if (at->kind == ZEL_KIND_INSTANCE_BRANCH) {
                kinds.insert(kinds.begin(), at->instanceKind);
            }
        }
        for (std::size_t i = 0; i < names.size(); ++i) {
            (void)(kinds.at(i) == ZEL_DATA_TEXT
                       ? ZEL_ParamListAddString(list_, names[i].c_str())
                       : ZEL_ParamListAddInt(list_, static_cast<std::int64_t>(std::stoull(names[i]))));
        }
    }
    ~TreeArguments() { ZEL_ParamListDestroy(list_); }
    TreeArguments(const TreeArguments&) = delete;
    TreeArguments& operator=(const TreeArguments&) = delete;

    const ZEL_ParamList* List() const { return list_; }

private:
    ZEL_ParamList* list_;
};

inline const ZEL_NodeDefinition& NodeAt(const std::string& path)
{
    for (std::size_t i = 0; const ZEL_NodeDefinition* node = ZEL_NodeDefinitionAt(i); ++i) {
        if (node->path == path) {
            return *node;
        }
    }
    throw std::invalid_argument("no node " + path);
}

template <typename Number>
std::string NumberText(std::string_view bytes)
{
    Number number = 0;
    std::memcpy(&number, bytes.data(), sizeof number);
    return std::to_string(number);
}

inline std::string HexText(std::string_view bytes, const char* separator)
{
    std::string text;
    for (const char byte : bytes) {
        text += text.empty() ? "" : separator;
        text += "0123456789abcdef"[static_cast<unsigned char>(byte) / 16];
        text += "0123456789abcdef"[static_cast<unsigned char>(byte) % 16];
    }
    return text;
}

inline std::string AddressText(int family, std::string_view bytes)
{
    char text[INET6_ADDRSTRLEN] = {};
    return inet_ntop(family, bytes.data(), text, sizeof text) != nullptr ? text : "";
}

inline std::string EnumText(const ZEL_Type& type, std::string_view bytes)
{
    std::uint32_t value = 0;
    std::memcpy(&value, bytes.data(), sizeof value);
    for (std::size_t i = 0; i < type.enumeratorCount; ++i) {
        if (type.enumerators[i].value == value) {
            return type.enumerators[i].name;
        }
    }
    return std::to_string(value);
}

/// A value that is no structure and no array, as text.
inline std::string PlainText(const ZEL_Type& type, std::string_view bytes)
{
    switch (type.kind) {
        case ZEL_DATA_BOOL:
            return bytes[0] != 0 ? "true" : "false";
        case ZEL_DATA_INT32:
            return NumberText<std::int32_t>(bytes);
        case ZEL_DATA_INT64:
            return NumberText<std::int64_t>(bytes);
        case ZEL_DATA_UINT16:
            return NumberText<std::uint16_t>(bytes);
        case ZEL_DATA_UINT32:
            return NumberText<std::uint32_t>(bytes);
        case ZEL_DATA_UINT64:
            return NumberText<std::uint64_t>(bytes);
        case ZEL_DATA_TEXT:
            return std::string(bytes.substr(0, bytes.find('\0')));
        case ZEL_DATA_MAC:
            return HexText(bytes, ":");
        case ZEL_DATA_IPV4:
            return AddressText(AF_INET, bytes);
        case ZEL_DATA_IPV6:
            return AddressText(AF_INET6, bytes);
        case ZEL_DATA_ENUM:
            return EnumText(type, bytes);
        default:
            return HexText(bytes, "");
    }
}

/// The members of a structure by name; of another value one entry without a name.
using Values = std::map<std::string, std::string>;

inline Values ValuesOf(const ZEL_Type& type, std::string_view bytes)
{
    Values values;
    for (std::size_t i = 0; i < type.memberCount; ++i) {
        const ZEL_TypeMember& member = type.members[i];
        values[member.name] = PlainText(*member.type, bytes.substr(member.offset, member.size));
    }
    return type.kind == ZEL_DATA_STRUCT ? values : Values{{"", PlainText(type, bytes)}};
}

/// One entry for each element of an array, one for any other value; none, with the status, when it cannot be read.
struct Reading
{
    ORV_ReturnStatus status = ORV_OK;
    std::vector<Values> elements = {};

    std::string operator[](const std::string& member) const
    {
        const bool known = elements.size() == 1 && elements[0].count(member) != 0;
        return known ? elements[0].at(member) : "status " + std::to_string(status) + ", no one value " + member;
    }
};

inline Reading Read(const std::string& path, const std::vector<std::string>& instances = {})
{
    const ZEL_NodeDefinition& node = NodeAt(path);
    const TreeArguments arguments(node, instances);
    std::string data;
    Reading reading{ZEL_GetData(node.node, arguments.List(), data)};
    if (reading.status != ORV_OK) {
        return reading;
    }
    if (node.outputType->kind != ZEL_DATA_ARRAY) {
        reading.elements.push_back(ValuesOf(*node.outputType, data));
        return reading;
    }
    const ZEL_Type& element = *node.outputType->element;
    for (std::size_t at = 0; at < data.size(); at += element.size) {
        reading.elements.push_back(ValuesOf(element, std::string_view(data).substr(at, element.size)));
    }
    return reading;
}

inline std::vector<std::string> Instances(const std::string& path, const std::vector<std::string>& above = {})
{
    const ZEL_NodeDefinition& node = NodeAt(path);
    const TreeArguments arguments(node, above);
    std::vector<std::string> names;
    const ORV_ReturnStatus status = ZEL_ListInstances(node.node, arguments.List(), names);
    return status == ORV_OK ? names : std::vector<std::string>{"status " + std::to_string(status)};
}
