#pragma once

#include <cstddef>
#include <cstdint>

// What the data of the kernel information tree looks like: enough to print any value and to check any input.

enum ZEL_DataKind : std::uint32_t
{
    ZEL_DATA_NONE,
    ZEL_DATA_BOOL,  ///< one byte, 0 or 1
    ZEL_DATA_INT8,  ///< integers stand in the host's byte order
    ZEL_DATA_INT16,
    ZEL_DATA_INT32,
    ZEL_DATA_INT64,
    ZEL_DATA_UINT8,
    ZEL_DATA_UINT16,
    ZEL_DATA_UINT32,
    ZEL_DATA_UINT64,
    ZEL_DATA_TEXT,    ///< ends at its first NUL or with the data; any bytes else, UTF-8 where the kernel keeps to it
    ZEL_DATA_BYTES,   ///< as many as there are
    ZEL_DATA_MAC,     ///< 6 bytes
    ZEL_DATA_UUID,    ///< 16 bytes in the order of their text form
    ZEL_DATA_IPV4,    ///< 4 bytes in network order
    ZEL_DATA_IPV6,    ///< 16 bytes in network order
    ZEL_DATA_ENUM,    ///< a uint32 whose values have names; one without a name is possible, and printed as a number
    ZEL_DATA_STRUCT,  ///< members at fixed places
    ZEL_DATA_ARRAY,   ///< elements one behind the other, as many as the data's bytes hold
};

struct ZEL_Type;

/// A named value of an enumeration.
struct ZEL_Enumerator
{
    std::uint32_t value;
    const char* name;
};

/// A member of a structure. A text, byte string or array fills @p size bytes: a text shorter than that ends with a
/// NUL (one that is longer was cut), an array has size / element->size elements.
struct ZEL_TypeMember
{
    const char* name;
    const char* help;
    const char* unit;  ///< "bytes", "percent", "ms"; empty when it has none
    const ZEL_Type* type;
    std::size_t offset;
    std::size_t size;
};

/// What a GET gives or a SET takes. Types live as long as the process; no pointer but those to lists of none is null.
struct ZEL_Type
{
    const char* name;  ///< "uint64", "text", or the name of the structure or enumeration
    ZEL_DataKind kind;
    std::size_t size;               ///< bytes of a value; 0 for a text, byte string or array of any length
    const ZEL_TypeMember* members;  ///< of a structure, else null
    std::size_t memberCount;
    const ZEL_Enumerator* enumerators;  ///< of an enumeration, else null
    std::size_t enumeratorCount;
    const ZEL_Type* element;  ///< of an array, never a type of any length; else null
};
