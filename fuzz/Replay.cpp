#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

/// Runs a target over every file of a corpus: what was found once stays found.
int main(int count, char** arguments)
{
    int inputs = 0;
    for (const auto& file : std::filesystem::directory_iterator(count > 1 ? arguments[1] : "")) {
        std::ostringstream content;
        content << std::ifstream(file.path(), std::ios::binary).rdbuf();
        const std::string input = content.str();
        std::fprintf(stderr, "%s\n", file.path().filename().c_str());
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
        ++inputs;
    }
    return inputs > 0 ? 0 : 1;
}
