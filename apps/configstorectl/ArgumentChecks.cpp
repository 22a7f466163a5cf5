#include "ArgumentChecks.h"

#include <algorithm>
#include <climits>

namespace ConfigStoreCtl
{
namespace
{
constexpr std::size_t LONGEST_ID = 512;

bool IsControl(char c)
{
    const auto byte = static_cast<unsigned char>(c);
    return byte < 0x20 || byte == 0x7F;
}

bool IsNotOfAnId(char c)
{
    return IsControl(c) || c == ' ' || c == '/';
}
}  // namespace

std::string CheckTruth(const std::string& text)
{
    return text == "true" || text == "false" ? "" : "'" + text + "' is neither true nor false";
}

std::string CheckHostFile(const std::string& path)
{
    return path.empty() || path[0] != '/' ? "'" + path + "' is no absolute path" : CheckListedFile(path);
}

std::string CheckListedFile(const std::string& path)
{
    if (path.empty() || path.back() == '/' || path.size() >= PATH_MAX) {
        return "'" + path + "' is no path of a file";
    }
    return std::any_of(path.begin(), path.end(), IsControl) ? "'" + path + "' has control characters" : "";
}

std::string CheckSchemaId(const std::string& id)
{
    const std::size_t hyphen = id.find('-');
    const bool named = hyphen != std::string::npos && hyphen > 0 && hyphen + 1 < id.size();
    const bool sound = named && id.size() <= LONGEST_ID && std::none_of(id.begin(), id.end(), IsNotOfAnId);
    return sound ? "" : "'" + id + "' is not of the form NAME-VERSION";
}
}  // namespace ConfigStoreCtl
