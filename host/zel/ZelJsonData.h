#pragma once

#include <string>

#include "Json.h"
#include "ZEL.h"

/// Turns stated JSON into the bytes of a type: numbers, booleans, texts and names of enumerated values as they are,
/// addresses and UUIDs in their text form, byte strings in hexadecimal, structures as objects (a member left out is 0
/// or empty), arrays as arrays. @return false, with the reason, when it is of another type, out of range or too long.
bool ZelDataOfJson(const ZEL_Type& type, const NimbConfigStore::JsonValue& json, std::string& data,
                   std::string& reason);
