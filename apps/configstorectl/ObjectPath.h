#pragma once

#include <string>
#include <vector>

namespace ConfigStoreCtl
{
/// Splits COMPONENT/GROUP/KEY/IDENTIFIER or a beginning of it. The identifier is the rest, slashes included.
std::vector<std::string> SplitObjectPath(const std::string& path);

/// Why @p path does not name one object (COMPONENT/GROUP/KEY); empty when it does.
std::string CheckObject(const std::string& path);

/// Why @p path names neither one object nor one instance of it (COMPONENT/GROUP/KEY/IDENTIFIER).
std::string CheckInstance(const std::string& path);

/// Why @p path is not a component, a group of it or an object (COMPONENT, COMPONENT/GROUP, COMPONENT/GROUP/KEY).
std::string CheckFilter(const std::string& path);
}  // namespace ConfigStoreCtl
