#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <map>
#include <set>

#include "CommandTable.h"

namespace
{
/// The names that "nm" lists, without parameters and versions, of the two namespaces that commands make reachable.
std::set<std::string> Names(const std::string& options, const std::string& file)
{
    FILE* const pipe = popen(("nm -D -C " + options + " '" BINARY_DIR "/" + file + "'").c_str(), "r");
    std::set<std::string> names;
    std::array<char, 4096> line{};
    while (fgets(line.data(), line.size(), pipe) != nullptr) {
        const std::string text = line.data();
        const std::size_t name = std::min(text.find(" NimbConfigStore::"), text.find(" NimbImage::"));
        if (name != std::string::npos) {
            const std::string found = text.substr(name + 1, text.find_first_of("([@\n", name) - name - 1);
            // Only what a compiler makes of templates is listed with the type that it returns.
            if (found.find(' ') == std::string::npos) {
                names.insert(found);
            }
        }
    }
    EXPECT_EQ(pclose(pipe), 0);
    return names;
}

/// Exported functions that the program does not call itself: a command, and the exported function that its call goes
/// through.
struct Indirect
{
    std::string command;
    std::string through;
};
const std::map<std::string, Indirect> INDIRECT = {
    // The boot's own question about itself: asked whenever the file system that booted is compared or remembered.
    {"NimbConfigStore::GetBootFsUUID", {"boot facts", "NimbConfigStore::HasBootbankChanged"}},
    // The second half of a registration run.
    {"NimbConfigStore::ProcessDefaultConfiguration", {"schema process", "NimbConfigStore::ProcessSchemas"}},
    // What files are read into: each schema file that is processed is one.
    {"NimbConfigStore::CreateDocument", {"schema process", "NimbConfigStore::ProcessSchemas"}},
    {"NimbConfigStore::CreateDocumentFromFile", {"schema process", "NimbConfigStore::ProcessSchemas"}},
    {"NimbConfigStore::JsonDoc::JsonDoc", {"schema process", "NimbConfigStore::ProcessSchemas"}},
    {"NimbConfigStore::JsonDoc::~JsonDoc", {"schema process", "NimbConfigStore::ProcessSchemas"}},
    {"NimbConfigStore::JsonDoc::GetJsonValuePtr", {"boot load", "NimbConfigStore::LoadStore"}},
    // Each key of the boot configuration document is checked on its own.
    {"NimbConfigStore::ValidateUserObject", {"boot load", "NimbConfigStore::LoadStore"}},
    {"NimbConfigStore::checkValidationErrors", {"boot load", "NimbConfigStore::LoadStore"}},
};

bool IsCommand(const std::string& path)
{
    const auto& commands = ConfigStoreCtl::Commands();
    return std::any_of(commands.begin(), commands.end(), [&](const auto& command) { return command.path == path; });
}
}  // namespace

TEST(Exports, AreAllReachedFromTheCommandLine)
{
    const std::set<std::string> called = Names("--undefined-only", "apps/configstorectl");
    for (const std::string& name : Names("--defined-only", "libconfigstorectl.so")) {
        const auto indirect = INDIRECT.find(name);
        if (indirect == INDIRECT.end()) {
            EXPECT_TRUE(called.contains(name)) << name << " needs a command";
        } else {
            EXPECT_FALSE(called.contains(name)) << name << " is called directly by now";
            EXPECT_TRUE(IsCommand(indirect->second.command)) << name;
            EXPECT_TRUE(called.contains(indirect->second.through)) << name;
        }
    }
}

TEST(Exports, AreListedAsIndirectOnlyWhileTheyExist)
{
    const std::set<std::string> exported = Names("--defined-only", "libconfigstorectl.so");
    EXPECT_FALSE(exported.empty());
    for (const auto& [name, indirect] : INDIRECT) {
        EXPECT_TRUE(exported.contains(name)) << name;
    }
}
