#pragma once

#include <string>

/// @p text with "?" in the place of everything that is not UTF-8, so that it can stand in a JSON document.
std::string ValidUtf8(const std::string& text);
