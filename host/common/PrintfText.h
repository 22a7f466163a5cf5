#pragma once

#include <cstdarg>
#include <string>

/// @p format filled in like vprintf; the format itself when it cannot be filled in.
std::string PrintfText(const char* format, va_list arguments);
