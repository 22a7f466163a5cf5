#pragma once

#include <rapidjson/document.h>

namespace NimbConfigStore
{
/// Documents are UTF-8 on a pool allocator; the document owns the memory of every value in it.
/// @{
using JsonDocument = rapidjson::Document;
using JsonValue = rapidjson::Value;
using JsonAllocator = rapidjson::Document::AllocatorType;
/// @}
}  // namespace NimbConfigStore
