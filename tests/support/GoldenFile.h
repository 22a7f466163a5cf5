#pragma once

#include <string>

/// Expects @p text to be what the file at @p path, below tests/, holds. With CONFIGSTORE_REWRITE_GOLDEN=1 in the
/// environment the file is written first, so that what changed shows as a difference in review.
void ExpectGoldenFile(const std::string& path, const std::string& text);
