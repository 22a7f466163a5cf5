#pragma once

// The one definition of RapidJSON's check hook. The build includes this file before everything else in every
// translation unit, so that no two of them can disagree about what a failed check does.

namespace NimbConfigStore
{
/// Throws ConfigStoreException 1082 with @p text. Called by RapidJSON's checks only.
[[noreturn]] __attribute__((visibility("default"))) void ThrowJsonError(const char* text);
}  // namespace NimbConfigStore

#define CONFIGSTORE_JSON_STRINGIFY_(x) #x
#define CONFIGSTORE_JSON_STRINGIFY(x) CONFIGSTORE_JSON_STRINGIFY_(x)

#define RAPIDJSON_ASSERT(x)                                                            \
    (static_cast<bool>(x) ? static_cast<void>(0)                                       \
                          : ::NimbConfigStore::ThrowJsonError("JSON error:\"" __FILE__ \
                                                              "\":" CONFIGSTORE_JSON_STRINGIFY(__LINE__) ": " #x))

// RapidJSON checks inside functions that it would otherwise declare noexcept; there a throw ends the process.
#define RAPIDJSON_HAS_CXX11_NOEXCEPT 0
