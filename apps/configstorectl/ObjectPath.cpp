#include "ObjectPath.h"

#include <algorithm>

namespace ConfigStoreCtl
{
namespace
{
std::string CheckParts(const std::string& path, std::size_t least, std::size_t most, const char* form)
{
    const std::vector<std::string> parts = SplitObjectPath(path);
    const bool complete =
        std::none_of(parts.begin(), parts.end(), [](const std::string& part) { return part.empty(); });
    const bool sound = complete && parts.size() >= least && parts.size() <= most;
    return sound ? "" : "'" + path + "' is not of the form " + form;
}
}  // namespace

std::vector<std::string> SplitObjectPath(const std::string& path)
{
    std::vector<std::string> parts;
    std::size_t begin = 0;
    std::size_t end = path.find('/');
    while (parts.size() < 3 && end != std::string::npos) {
        parts.push_back(path.substr(begin, end - begin));
        begin = end + 1;
        end = path.find('/', begin);
    }
    parts.push_back(path.substr(begin));
    return parts;
}

std::string CheckObject(const std::string& path)
{
    return CheckParts(path, 3, 3, "COMPONENT/GROUP/KEY");
}

std::string CheckInstance(const std::string& path)
{
    return CheckParts(path, 3, 4, "COMPONENT/GROUP/KEY[/IDENTIFIER]");
}

std::string CheckFilter(const std::string& path)
{
    return CheckParts(path, 1, 3, "COMPONENT[/GROUP[/KEY]]");
}
}  // namespace ConfigStoreCtl
