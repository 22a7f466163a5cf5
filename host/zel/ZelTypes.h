#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <type_traits>

#include "ZEL.h"

// The types that providers describe their data with. A provider's structure is an ordinary struct whose members' types
// are taken from their C++ types.

struct ZelMac
{
    std::uint8_t bytes[6];
};
struct ZelUuid
{
    std::uint8_t bytes[16];
};
struct ZelIpv4
{
    std::uint8_t bytes[4];
};
struct ZelIpv6
{
    std::uint8_t bytes[16];
};

constexpr ZEL_Type ZelPlainType(const char* name, ZEL_DataKind kind, std::size_t size)
{
    return {name, kind, size, nullptr, 0, nullptr, 0, nullptr};
}

template <typename Struct, std::size_t N>
constexpr ZEL_Type ZelStructType(const char* name, const ZEL_TypeMember (&members)[N])
{
    return {name, ZEL_DATA_STRUCT, sizeof(Struct), members, N, nullptr, 0, nullptr};
}

template <std::size_t N>
constexpr ZEL_Type ZelEnumType(const char* name, const ZEL_Enumerator (&enumerators)[N])
{
    return {name, ZEL_DATA_ENUM, sizeof(std::uint32_t), nullptr, 0, enumerators, N, nullptr};
}

/// An array of any number of elements.
constexpr ZEL_Type ZelArrayType(const char* name, const ZEL_Type& element)
{
    return {name, ZEL_DATA_ARRAY, 0, nullptr, 0, nullptr, 0, &element};
}

inline constexpr ZEL_Type ZEL_BOOL = ZelPlainType("bool", ZEL_DATA_BOOL, 1);
inline constexpr ZEL_Type ZEL_INT8 = ZelPlainType("int8", ZEL_DATA_INT8, 1);
inline constexpr ZEL_Type ZEL_INT16 = ZelPlainType("int16", ZEL_DATA_INT16, 2);
inline constexpr ZEL_Type ZEL_INT32 = ZelPlainType("int32", ZEL_DATA_INT32, 4);
inline constexpr ZEL_Type ZEL_INT64 = ZelPlainType("int64", ZEL_DATA_INT64, 8);
inline constexpr ZEL_Type ZEL_UINT8 = ZelPlainType("uint8", ZEL_DATA_UINT8, 1);
inline constexpr ZEL_Type ZEL_UINT16 = ZelPlainType("uint16", ZEL_DATA_UINT16, 2);
inline constexpr ZEL_Type ZEL_UINT32 = ZelPlainType("uint32", ZEL_DATA_UINT32, 4);
inline constexpr ZEL_Type ZEL_UINT64 = ZelPlainType("uint64", ZEL_DATA_UINT64, 8);
inline constexpr ZEL_Type ZEL_TEXT = ZelPlainType("text", ZEL_DATA_TEXT, 0);
inline constexpr ZEL_Type ZEL_MAC = ZelPlainType("mac", ZEL_DATA_MAC, 6);
inline constexpr ZEL_Type ZEL_UUID = ZelPlainType("uuid", ZEL_DATA_UUID, 16);
inline constexpr ZEL_Type ZEL_IPV4 = ZelPlainType("ipv4", ZEL_DATA_IPV4, 4);
inline constexpr ZEL_Type ZEL_IPV6 = ZelPlainType("ipv6", ZEL_DATA_IPV6, 16);

template <typename T>
struct ZelTypeFor;

#define ZEL_TYPE_FOR(cppType, zelType)                    \
    template <>                                           \
    struct ZelTypeFor<cppType>                            \
    {                                                     \
        static constexpr const ZEL_Type* of = &(zelType); \
    }
ZEL_TYPE_FOR(bool, ZEL_BOOL);
ZEL_TYPE_FOR(std::int8_t, ZEL_INT8);
ZEL_TYPE_FOR(std::int16_t, ZEL_INT16);
ZEL_TYPE_FOR(std::int32_t, ZEL_INT32);
ZEL_TYPE_FOR(std::int64_t, ZEL_INT64);
ZEL_TYPE_FOR(std::uint8_t, ZEL_UINT8);
ZEL_TYPE_FOR(std::uint16_t, ZEL_UINT16);
ZEL_TYPE_FOR(std::uint32_t, ZEL_UINT32);
ZEL_TYPE_FOR(std::uint64_t, ZEL_UINT64);
ZEL_TYPE_FOR(ZelMac, ZEL_MAC);
ZEL_TYPE_FOR(ZelUuid, ZEL_UUID);
ZEL_TYPE_FOR(ZelIpv4, ZEL_IPV4);
ZEL_TYPE_FOR(ZelIpv6, ZEL_IPV6);
#undef ZEL_TYPE_FOR

template <std::size_t N>
struct ZelTypeFor<char[N]>
{
    static constexpr const ZEL_Type* of = &ZEL_TEXT;
};

/// A member whose type says itself what it is.
#define ZEL_MEMBER(Struct, field, unit, help) \
    ZEL_TYPED_MEMBER(Struct, field, *ZelTypeFor<decltype(Struct::field)>::of, unit, help)

/// A member of a type of its own: an enumeration, kept as a uint32, or a structure.
#define ZEL_TYPED_MEMBER(Struct, field, type, unit, help)                           \
    {                                                                               \
#field, help, unit, &(type), offsetof(Struct, field), sizeof(Struct::field) \
    }

/// The bytes of a structure or number as they are given out. A structure has no gaps: their bytes would be chance.
template <typename T>
std::string ZelBytesOf(const T& value)
{
    static_assert(std::has_unique_object_representations_v<T>);
    return {reinterpret_cast<const char*>(&value), sizeof value};
}

/// Fills a text member, cut to fit; the rest becomes NUL.
template <std::size_t N>
void ZelFillText(char (&field)[N], const std::string& text)
{
    const std::size_t length = text.copy(field, N - 1);
    for (std::size_t i = length; i < N; ++i) {
        field[i] = '\0';
    }
}
