#include <cstdint>
#include <cstdlib>
#include <string>

#include "FuzzHost.h"

namespace
{
/// Arguments lie one behind the other in the text, and none is empty.
void CheckArguments(const char* text)
{
    const char* start = nullptr;
    const char* end = nullptr;
    while (const char* next = ZELSHParseArgument(text, &start, &end)) {
        if (start < text || end <= start || next != end) {
            std::abort();
        }
        text = next;
    }
}

void CheckCompletion(const std::string& line)
{
    for (int state = 0; char* candidate = ZELSH_CommandGenerator(line.c_str(), state); ++state) {
        std::free(candidate);
    }
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FuzzHost();
    const std::string line(reinterpret_cast<const char*>(data), size);
    options = {0, 0, 0, 1,
               size % 3 == 0   ? zelshDefaultOutputPtr
               : size % 3 == 1 ? zelshRawOutputPtr
                               : zelshPythonOutputPtr};
    CheckArguments(line.c_str());
    CheckCompletion(line);
    const int status = ZELSH_ParseAndExecCmd(line.c_str());
    return status >= 0 && status <= 2 ? 0 : (std::abort(), 0);
}
