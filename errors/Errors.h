#pragma once

#include <cstdio>
#include <string>

#include "ConfigStoreException.h"
#include "ZubEvents.h"

namespace NimbConfigStore
{
/// @p format filled in like printf, of any length.
template <typename... Args>
std::string Format(const char* format, Args... args)
{
    // The templates come from tables, so the compiler cannot check them here.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-security"
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
    const int length = std::snprintf(nullptr, 0, format, args...);
    std::string text(length > 0 ? static_cast<std::size_t>(length) : 0, '\0');
    std::snprintf(text.data(), text.size() + 1, format, args...);
#pragma GCC diagnostic pop
    return text;
}

/// Throws E(code, text), the text being the message template of @p code filled with @p args.
template <typename E, typename... Args>
[[noreturn]] void ThrowException(CSErrorCodes code, Args... args)
{
    throw E(code, Format(ErrorMessageForId(code), args...).c_str());
}
}  // namespace NimbConfigStore
