#include "GoldenFile.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string_view>

namespace
{
bool AreRewritten()
{
    const char* rewrite = std::getenv("CONFIGSTORE_REWRITE_GOLDEN");
    return rewrite != nullptr && std::string_view(rewrite) == "1";
}
}  // namespace

void ExpectGoldenFile(const std::string& path, const std::string& text)
{
    const std::string file = std::string(SOURCE_DIR "/tests/") + path;
    if (AreRewritten()) {
        std::ofstream(file, std::ios::binary) << text;
    }
    std::ostringstream expected;
    expected << std::ifstream(file, std::ios::binary).rdbuf();
    EXPECT_EQ(text, expected.str()) << path;
}
