#include "ZelJsonData.h"

#include <arpa/inet.h>

#include <cstring>
#include <limits>
#include <type_traits>

#include "ZelHex.h"

using NimbConfigStore::JsonValue;

namespace
{
/// The room of a value: a member's size, or any length at the top.
constexpr std::size_t ANY_LENGTH = std::numeric_limits<std::size_t>::max();

bool AppendValue(const ZEL_Type& type, std::size_t room, const JsonValue& json, std::string& data, std::string& reason);

template <typename Number>
void AppendNumber(Number number, std::string& data)
{
    data.append(reinterpret_cast<const char*>(&number), sizeof number);
}

template <typename Number>
bool AppendInteger(const JsonValue& json, std::string& data)
{
    using Limits = std::numeric_limits<Number>;
    if constexpr (std::is_signed_v<Number>) {
        if (!json.IsInt64() || json.GetInt64() < Limits::min() || json.GetInt64() > Limits::max()) {
            return false;
        }
        AppendNumber(static_cast<Number>(json.GetInt64()), data);
    } else {
        if (!json.IsUint64() || json.GetUint64() > Limits::max()) {
            return false;
        }
        AppendNumber(static_cast<Number>(json.GetUint64()), data);
    }
    return true;
}

bool AppendBool(const JsonValue& json, std::string& data)
{
    AppendNumber(static_cast<std::uint8_t>(json.IsTrue()), data);
    return json.IsBool();
}

std::string TextOf(const JsonValue& json)
{
    return json.IsString() ? std::string(json.GetString(), json.GetStringLength()) : "";
}

bool AppendText(std::size_t room, const JsonValue& json, std::string& data)
{
    const std::string text = TextOf(json);
    if (!json.IsString() || text.find('\0') != std::string::npos) {
        return false;
    }
    data += text;
    return room == ANY_LENGTH || text.size() < room;
}

/// @p separator stands between any two bytes or is left out there, as in a UUID.
bool AppendHex(std::size_t size, char separator, const JsonValue& json, std::string& data)
{
    std::string bytes;
    if (!json.IsString() || !ZelBytesOfHex(TextOf(json), separator, bytes) || (size != 0 && bytes.size() != size)) {
        return false;
    }
    data += bytes;
    return true;
}

bool AppendAddress(int family, std::size_t size, const JsonValue& json, std::string& data)
{
    char address[16];
    if (!json.IsString() || inet_pton(family, json.GetString(), address) != 1) {
        return false;
    }
    data.append(address, size);
    return true;
}

bool AppendEnum(const ZEL_Type& type, const JsonValue& json, std::string& data)
{
    for (std::size_t i = 0; i < type.enumeratorCount; ++i) {
        if (json.IsString() && TextOf(json) == type.enumerators[i].name) {
            AppendNumber(type.enumerators[i].value, data);
            return true;
        }
    }
    return AppendInteger<std::uint32_t>(json, data);
}

bool HasOnlyMembersOf(const ZEL_Type& type, const JsonValue& json, std::string& reason)
{
    for (const auto& given : json.GetObject()) {
        bool known = false;
        for (std::size_t i = 0; i < type.memberCount; ++i) {
            known = known || std::strcmp(type.members[i].name, given.name.GetString()) == 0;
        }
        if (!known) {
            reason = std::string("no member ") + given.name.GetString() + " in " + type.name;
            return false;
        }
    }
    return true;
}

bool AppendStruct(const ZEL_Type& type, const JsonValue& json, std::string& data, std::string& reason)
{
    if (!json.IsObject() || !HasOnlyMembersOf(type, json, reason)) {
        return false;
    }
    std::string whole(type.size, '\0');
    for (std::size_t i = 0; i < type.memberCount; ++i) {
        const ZEL_TypeMember& member = type.members[i];
        const auto given = json.FindMember(member.name);
        std::string bytes;
        if (given != json.MemberEnd() && !AppendValue(*member.type, member.size, given->value, bytes, reason)) {
            reason = std::string(member.name) + ": " + reason;
            return false;
        }
        whole.replace(member.offset, bytes.size(), bytes);
    }
    data += whole;
    return true;
}

bool AppendArray(const ZEL_Type& type, std::size_t room, const JsonValue& json, std::string& data, std::string& reason)
{
    if (!json.IsArray()) {
        return false;
    }
    for (const JsonValue& element : json.GetArray()) {
        if (!AppendValue(*type.element, type.element->size, element, data, reason)) {
            return false;
        }
    }
    return room == ANY_LENGTH || data.size() <= room;
}

bool AppendPlain(const ZEL_Type& type, std::size_t room, const JsonValue& json, std::string& data)
{
    switch (type.kind) {
        case ZEL_DATA_BOOL:
            return AppendBool(json, data);
        case ZEL_DATA_INT8:
            return AppendInteger<std::int8_t>(json, data);
        case ZEL_DATA_INT16:
            return AppendInteger<std::int16_t>(json, data);
        case ZEL_DATA_INT32:
            return AppendInteger<std::int32_t>(json, data);
        case ZEL_DATA_INT64:
            return AppendInteger<std::int64_t>(json, data);
        case ZEL_DATA_UINT8:
            return AppendInteger<std::uint8_t>(json, data);
        case ZEL_DATA_UINT16:
            return AppendInteger<std::uint16_t>(json, data);
        case ZEL_DATA_UINT32:
            return AppendInteger<std::uint32_t>(json, data);
        case ZEL_DATA_UINT64:
            return AppendInteger<std::uint64_t>(json, data);
        case ZEL_DATA_TEXT:
            return AppendText(room, json, data);
        case ZEL_DATA_BYTES:
            return AppendHex(room == ANY_LENGTH ? type.size : room, '\0', json, data);
        case ZEL_DATA_MAC:
            return AppendHex(type.size, ':', json, data);
        case ZEL_DATA_UUID:
            return AppendHex(type.size, '-', json, data);
        case ZEL_DATA_IPV4:
            return AppendAddress(AF_INET, type.size, json, data);
        case ZEL_DATA_IPV6:
            return AppendAddress(AF_INET6, type.size, json, data);
        case ZEL_DATA_ENUM:
            return AppendEnum(type, json, data);
        default:
            return false;
    }
}

// Types are nested as deep as they were written down, whatever the document's depth.
bool AppendValue(const ZEL_Type& type, std::size_t room, const JsonValue& json, std::string& data, std::string& reason)
{
    reason.clear();
    bool done = false;
    if (type.kind == ZEL_DATA_STRUCT) {
        done = AppendStruct(type, json, data, reason);
    } else if (type.kind == ZEL_DATA_ARRAY) {
        done = AppendArray(type, room, json, data, reason);
    } else {
        done = AppendPlain(type, room, json, data);
    }
    if (!done && reason.empty()) {
        reason = std::string("not a value of type ") + type.name;
    }
    return done;
}
}  // namespace

bool ZelDataOfJson(const ZEL_Type& type, const JsonValue& json, std::string& data, std::string& reason)
{
    return AppendValue(type, ANY_LENGTH, json, data, reason);
}
