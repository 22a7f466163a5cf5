#pragma once

#include <string>
#include <vector>

#include "ZelshOutput.h"

namespace Zelsh
{
/// What is true of a value whose type is neither a structure nor an array: its text form, and how it is told apart.
enum class ScalarForm
{
    NUMBER,
    BOOLEAN,
    TEXT,
    BYTES,
};

struct Scalar
{
    ScalarForm form;
    std::string text;  ///< of a text or byte string the bytes themselves
};

/// A value whose bytes are fewer than its type takes is empty.
Scalar ReadScalar(const Value& value);

bool IsStructure(const ZEL_Type& type);

/// An array, but not one that is a text.
bool IsArray(const ZEL_Type& type);

/// The members of a structure or the elements of an array, in their order. The name of an element is its index.
struct Part
{
    std::string name;
    Value value;
};
std::vector<Part> Parts(const Value& value);

/// The type as "typeget" and "ls -l" show it: "uint64", "text", "uint32[]".
std::string TypeName(const ZEL_Type& type);
}  // namespace Zelsh
