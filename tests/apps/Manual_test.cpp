#include <gmock/gmock.h>

#include <algorithm>
#include <fstream>
#include <sstream>

#include "CommandHelp.h"
#include "CommandTable.h"

using ::testing::HasSubstr;

namespace
{
std::string Page()
{
    std::ostringstream page;
    page << std::ifstream(BINARY_DIR "/man/configstorectl.1", std::ios::binary).rdbuf();
    return page.str();
}

/// Without what only the page's source needs.
std::string Words(std::string text)
{
    std::replace(text.begin(), text.end(), '\n', ' ');
    return text;
}
}  // namespace

TEST(Manual, HasEveryCommandWithItsHelpArgumentsAndOptions)
{
    const std::string page = Page();
    for (const ConfigStoreCtl::Command& command : ConfigStoreCtl::Commands()) {
        const std::size_t item = page.find(".It Ic " + ConfigStoreCtl::Usage(command) + "\n");
        ASSERT_NE(item, std::string::npos) << command.path;
        const std::string entry = Words(page.substr(item, page.find(".It Ic ", item + 1) - item));
        EXPECT_THAT(entry, HasSubstr(std::string(command.help).substr(1) + ". "));
        for (const ConfigStoreCtl::ArgumentRow& row : command.arguments) {
            EXPECT_THAT(entry, HasSubstr(std::string(".It Ar ") + row.name));
            EXPECT_THAT(entry, HasSubstr(std::string(row.help).substr(1) + ". "));
        }
        for (const ConfigStoreCtl::OptionRow& row : command.options) {
            EXPECT_THAT(entry, HasSubstr(".It Fl \\" + std::string(row.name).substr(1)));
        }
    }
}

TEST(Manual, HasEveryGlobalOption)
{
    for (const ConfigStoreCtl::GlobalOption& option : ConfigStoreCtl::GlobalOptions()) {
        std::string name = option.names;
        name = name.substr(name.rfind("--") + 2);
        EXPECT_THAT(Page(), HasSubstr("Fl \\-" + name)) << name;
    }
}

TEST(Manual, HasNothingLeftOfItsForm)
{
    EXPECT_THAT(Page(), ::testing::Not(HasSubstr("@")));
}
