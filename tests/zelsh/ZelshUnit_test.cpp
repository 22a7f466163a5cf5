#include <gmock/gmock.h>

#include <fstream>
#include <regex>
#include <sstream>
#include <string>

using ::testing::HasSubstr;

namespace
{
std::string FileOfSources(const std::string& path)
{
    std::ostringstream text;
    text << std::ifstream(std::string(SOURCE_DIR) + path).rdbuf();
    return text.str();
}
}  // namespace

TEST(ZelshUnit, TheDaemonSeesTheMountsAndTheNetworkOfItsHost)
{
    const std::string unit = FileOfSources("/packaging/zelsh-daemon.service.in");
    ASSERT_THAT(unit, HasSubstr("--daemon --listen 127.0.0.1"));
    const std::regex ownNamespace(
        "(^|\n)((Private|Protect|Bind|Root|Mount)\\w+|(ReadOnly|ReadWrite|Inaccessible|Exec|NoExec)Paths|"
        "TemporaryFileSystem|DynamicUser|ProcSubset|ExtensionImages|LogNamespace|LoadCredential\\w*|"
        "NetworkNamespacePath|IPCNamespacePath)=[^\n]*");
    std::smatch found;
    EXPECT_FALSE(std::regex_search(unit, found, ownNamespace)) << found.str();
}
