#include "ZelshValue.h"

#include <arpa/inet.h>
#include <algorithm>
#include <cstring>

#include "ZelshText.h"

namespace Zelsh
{
namespace
{
template <typename Number>
std::string NumberText(std::string_view bytes)
{
    Number number = 0;
    std::memcpy(&number, bytes.data(), sizeof number);
    return std::to_string(number);
}

std::string IntegerText(ZEL_DataKind kind, std::string_view bytes)
{
    switch (kind) {
        case ZEL_DATA_INT8:
            return NumberText<std::int8_t>(bytes);
        case ZEL_DATA_INT16:
            return NumberText<std::int16_t>(bytes);
        case ZEL_DATA_INT32:
            return NumberText<std::int32_t>(bytes);
        case ZEL_DATA_INT64:
            return NumberText<std::int64_t>(bytes);
        case ZEL_DATA_UINT8:
            return NumberText<std::uint8_t>(bytes);
        case ZEL_DATA_UINT16:
            return NumberText<std::uint16_t>(bytes);
        case ZEL_DATA_UINT32:
            return NumberText<std::uint32_t>(bytes);
        default:
            return NumberText<std::uint64_t>(bytes);
    }
}

std::string MacText(std::string_view bytes)
{
    std::string text;
    for (const char byte : bytes) {
        text += (text.empty() ? "" : ":") + Hexadecimal({&byte, 1});
    }
    return text;
}

std::string UuidText(std::string_view bytes)
{
    std::string text = Hexadecimal(bytes);
    for (const std::size_t dash : {8U, 13U, 18U, 23U}) {
        text.insert(dash, "-");
    }
    return text;
}

std::string AddressText(int family, std::string_view bytes)
{
    char text[INET6_ADDRSTRLEN] = {};
    inet_ntop(family, bytes.data(), text, sizeof text);
    return text;
}

Scalar ReadEnumeration(const ZEL_Type& type, std::string_view bytes)
{
    std::uint32_t number = 0;
    std::memcpy(&number, bytes.data(), sizeof number);
    for (std::size_t i = 0; i < type.enumeratorCount; ++i) {
        if (type.enumerators[i].value == number) {
            return {ScalarForm::TEXT, type.enumerators[i].name};
        }
    }
    return {ScalarForm::NUMBER, std::to_string(number)};
}

/// The value's own bytes; null when there are fewer than its type takes.
std::string_view MemberBytes(const ZEL_TypeMember& member, std::string_view structure)
{
    const std::size_t size = member.size != 0 ? member.size : member.type->size;
    return member.offset + size <= structure.size() ? structure.substr(member.offset, size) : std::string_view();
}

std::vector<Part> Members(const Value& value)
{
    std::vector<Part> parts;
    for (std::size_t i = 0; i < value.type->memberCount; ++i) {
        const ZEL_TypeMember& member = value.type->members[i];
        parts.push_back({member.name, {member.type, MemberBytes(member, value.bytes), member.unit}});
    }
    return parts;
}

std::vector<Part> Elements(const Value& value)
{
    std::vector<Part> parts;
    const std::size_t size = value.type->element->size;
    for (std::size_t i = 0; size != 0 && (i + 1) * size <= value.bytes.size(); ++i) {
        parts.push_back({std::to_string(i), {value.type->element, value.bytes.substr(i * size, size), value.unit}});
    }
    return parts;
}
}  // namespace

Scalar ReadScalar(const Value& value)
{
    const ZEL_Type& type = *value.type;
    const std::string_view bytes = value.bytes;
    if (type.kind == ZEL_DATA_TEXT || ZELSHIsArrayStringType(&type) != 0) {
        return {ScalarForm::TEXT, std::string(bytes.substr(0, bytes.find('\0')))};
    }
    if (type.kind == ZEL_DATA_BYTES) {
        return {ScalarForm::BYTES, std::string(bytes)};
    }
    if (bytes.size() < type.size || bytes.empty()) {
        return {ScalarForm::TEXT, ""};
    }
    switch (type.kind) {
        case ZEL_DATA_BOOL:
            return {ScalarForm::BOOLEAN, bytes[0] != 0 ? "true" : "false"};
        case ZEL_DATA_MAC:
            return {ScalarForm::TEXT, MacText(bytes.substr(0, 6))};
        case ZEL_DATA_UUID:
            return {ScalarForm::TEXT, UuidText(bytes.substr(0, 16))};
        case ZEL_DATA_IPV4:
            return {ScalarForm::TEXT, AddressText(AF_INET, bytes)};
        case ZEL_DATA_IPV6:
            return {ScalarForm::TEXT, AddressText(AF_INET6, bytes)};
        case ZEL_DATA_ENUM:
            return ReadEnumeration(type, bytes);
        default:
            return {ScalarForm::NUMBER, IntegerText(type.kind, bytes)};
    }
}

bool IsStructure(const ZEL_Type& type)
{
    return type.kind == ZEL_DATA_STRUCT;
}

bool IsArray(const ZEL_Type& type)
{
    return type.kind == ZEL_DATA_ARRAY && ZELSHIsArrayStringType(&type) == 0;
}

std::vector<Part> Parts(const Value& value)
{
    return IsStructure(*value.type) ? Members(value) : Elements(value);
}

std::string TypeName(const ZEL_Type& type)
{
    return type.kind == ZEL_DATA_ARRAY ? TypeName(*type.element) + "[]" : type.name;
}
}  // namespace Zelsh

int ZELSHIsArrayStringType(const ZEL_Type* type)
{
    return type != nullptr && type->kind == ZEL_DATA_ARRAY && type->element != nullptr &&
                   type->element->kind == ZEL_DATA_INT8
               ? 1
               : 0;
}
