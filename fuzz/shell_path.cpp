#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>

#include "FuzzHost.h"
#include "ZelshWords.h"

namespace
{
using Path = std::unique_ptr<ZELSHPath, decltype(&ZELSHPath_Delete)>;

Path Form(const std::string& text)
{
    ZELSHPath* path = nullptr;
    (void)ZELSHPath_Form(text.c_str(), &path);
    return {path, &ZELSHPath_Delete};
}

std::string TextOf(const ZELSHPath& path)
{
    std::string text(1 << 20, '\0');
    if (ZELSHPath_GetStr(&path, text.data(), text.size()) != ORV_OK) {
        std::abort();
    }
    return text.c_str();
}

/// The text of a path leads to the same path again.
void CheckPath(const std::string& text)
{
    const Path path = Form(text);
    if (path == nullptr) {
        return;
    }
    const std::string written = TextOf(*path);
    const Path again = Form(written);
    if (again == nullptr || TextOf(*again) != written) {
        std::abort();
    }
    ZEL_ParamList* arguments = nullptr;
    (void)ZELSHPath_GetInstArgs(path.get(), &arguments);
    ZEL_ParamListDestroy(arguments);
}

/// Any bytes can be a name, and a name is one argument of a line.
void CheckName(const std::string& name)
{
    const std::string quoted = Zelsh::QuoteComponent(name);
    const char* start = nullptr;
    const char* end = nullptr;
    if (Zelsh::Unquote(quoted) != name || Zelsh::SplitPath(quoted).size() != 1 ||
        ZELSHParseArgument(quoted.c_str(), &start, &end) == nullptr || *end != '\0') {
        std::abort();
    }
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FuzzHost();
    const std::string text(reinterpret_cast<const char*>(data), size);
    CheckPath(text);
    CheckPath("/system/quenfs/ramdisks/" + text);
    CheckName(text);
    return 0;
}
