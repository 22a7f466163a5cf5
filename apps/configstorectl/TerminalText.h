#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace ConfigStoreCtl
{
/// @p text as it may be shown on a terminal: control characters (C0, DEL, C1) and bytes that are not UTF-8 become
/// visible escapes, so that nothing kept in a store can steer the terminal of whoever reads it.
std::string EscapeControls(std::string_view text);

/// Makes serialised JSON safe in the same way without changing what it says: DEL and C1 become \u escapes, bytes that
/// are not UTF-8 become U+FFFD.
std::string EscapeJsonControls(std::string_view json);

/// The beginning of @p text that takes no more than @p width columns.
std::string CutToWidth(std::string_view text, std::size_t width);
}  // namespace ConfigStoreCtl
