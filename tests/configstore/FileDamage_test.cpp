#include <gmock/gmock.h>

#include <filesystem>
#include <ostream>

#include "BootHost.h"
#include "NimbConfigStore.h"
#include "StoreFiles.h"

namespace fs = std::filesystem;

// Every file that a boot reads, damaged in every way. The boot must end as that file's damage makes it end, and
// something that it logs or raises must name the file.
namespace
{
enum class Named
{
    Yes,
    NotRequired,  // an absent file is an ordinary state, or the content is free
};

struct Outcome
{
    int result;
    Named named;
};

struct Input
{
    const char* label;
    const char* path;
    Outcome absent;
    Outcome folder;
    Outcome content;
    bool emptyIsAbsent = false;
};

[[maybe_unused]] void PrintTo(const Input& input, std::ostream* out)
{
    *out << input.label;
}

constexpr Outcome FAILS = {1, Named::Yes};
constexpr Outcome GOES_ON = {0, Named::Yes};
constexpr Outcome ORDINARY = {0, Named::NotRequired};

constexpr Input INPUTS[] = {
    {"KernelFacts", "/etc/talvor/platform/kernel.json", FAILS, FAILS, FAILS},
    {"Features", "/etc/talvor/platform/features.json", ORDINARY, GOES_ON, GOES_ON},
    {"Backup", BACKUP, ORDINARY, GOES_ON, GOES_ON},
    {"DataFileBackup", DATAFILE_BACKUP, ORDINARY, GOES_ON, GOES_ON},
    {"ConfigStore", STORE, ORDINARY, FAILS, ORDINARY},
    {"DataFileStore", DATAFILE_STORE, ORDINARY, GOES_ON, ORDINARY},
    {"SchemaStore", "/var/lib/talvor/configstore/schema-store", ORDINARY, GOES_ON, GOES_ON, true},
    {"SchemaFile", "/usr/lib/talvor/configmanager/schemas/net-core-1.0.0_1.0.json", ORDINARY, GOES_ON, GOES_ON},
    {"DefaultConfig", "/etc/talvor/default-config/net-core-1.0.0_1.0.json", ORDINARY, GOES_ON, GOES_ON},
    {"BootDocument", BOOT_DOCUMENT, ORDINARY, GOES_ON, GOES_ON},
    {"ImageProfile", "/var/db/nimbimg/profiles/profile", FAILS, FAILS, FAILS},
    {"Descriptor", "/var/db/nimbimg/brevs/Talvor_bootbank_net-core_1.0.0_1.0.xml", ORDINARY, ORDINARY, FAILS},
    {"UpgradeModule", "/usr/lib/talvor/configmanager/upgrade/lib/success.so", ORDINARY, GOES_ON, GOES_ON},
    {"NonSchemaFiles", "/var/run/nonSchemaFiles", ORDINARY, GOES_ON, ORDINARY},
    {"EarlierErrors", EARLIER_ERRORS, ORDINARY, FAILS, FAILS},
};

enum class Damage
{
    Missing,
    DanglingLink,
    LoopingLink,
    Folder,
    Empty,
    Garbage,
    Truncated,
    DeepNesting,
};

constexpr const char* DAMAGES[] = {"Missing", "DanglingLink", "LoopingLink", "Folder",
                                   "Empty",   "Garbage",      "Truncated",   "DeepNesting"};

class FileDamageTest : public BootHostTest, public ::testing::WithParamInterface<std::tuple<Input, int>>
{
protected:
    // A boot that reads all of the files: from another bank, with the boot document.
    FileDamageTest()
    {
        SetKey("BOOT_MODE", "2");
        SaveBackup();
        Host().WithKernel({.bootFsUUID = OTHER_UUID});
        Host().WithFeatures(R"({"schemaVersioning": true})");
        Host().WriteFile(BOOT_DOCUMENT, R"({"nimb": {"network": {"dns": {"hostname": "b"}}}})");
        Host().WriteFile("/var/run/nonSchemaFiles", "etc/x.conf etc/declared.conf");
        Host().WriteFile(EARLIER_ERRORS, R"({"zubs": [{"zubMsg": "text"}]})");
        fs::copy_file(UPGRADE_MODULES "/success.so",
                      Host().Real("/usr/lib/talvor/configmanager/upgrade/lib/success.so"));
    }

    void Inflict(Damage damage, const std::string& path)
    {
        const std::string content = Host().ReadFile(path);
        Host().Remove(path);
        switch (damage) {
            case Damage::Missing:
                break;
            case Damage::DanglingLink:
                fs::create_symlink("/nowhere/at/all", Host().Real(path));
                break;
            case Damage::LoopingLink:
                fs::create_symlink(path, Host().Real(path));
                break;
            case Damage::Folder:
                Host().WriteFile(path + "/full", "");
                break;
            case Damage::Empty:
                Host().WriteFile(path, "");
                break;
            case Damage::Garbage:
                Host().WriteFile(path, std::string("\x01\x00\xff{]<garbage \x80", 14));
                break;
            case Damage::Truncated:
                Host().WriteFile(path, content.substr(0, content.size() / 8));
                break;
            case Damage::DeepNesting:
                Host().WriteFile(path, Nested(path.ends_with(".json") ? "[" : "<a>"));
                break;
        }
    }

    // True when an error, a warning or an event names the file, by its path or by its name in the folder.
    bool IsNamed(const std::string& path)
    {
        const std::string name = path.substr(path.find_last_of('/') + 1);
        std::string said;
        for (const std::string& line : Host().Log()) {
            said += line.starts_with("info") ? "" : line + "\n";
        }
        for (const RaisedEvent& event : Host().Events()) {
            said += event.text + "\n";
        }
        return said.find(name) != std::string::npos;
    }

private:
    static std::string Nested(const std::string& opening)
    {
        std::string text;
        for (int depth = 0; depth < 500'000; ++depth) {
            text += opening;
        }
        return text;
    }
};

Outcome Expected(const Input& input, Damage damage)
{
    if (damage <= Damage::LoopingLink || (damage == Damage::Empty && input.emptyIsAbsent)) {
        return input.absent;
    }
    return damage == Damage::Folder ? input.folder : input.content;
}
}  // namespace

TEST_P(FileDamageTest, EndsTheBootAsItMustAndIsNamed)
{
    const Input& input = std::get<Input>(GetParam());
    const auto damage = static_cast<Damage>(std::get<int>(GetParam()));
    Inflict(damage, input.path);
    Host().ClearLogs();
    const Outcome expected = Expected(input, damage);
    EXPECT_EQ(NimbConfigStore::LoadStore(true), expected.result);
    EXPECT_TRUE(expected.named == Named::NotRequired || IsNamed(input.path)) << ::testing::PrintToString(Host().Log());
}

INSTANTIATE_TEST_SUITE_P(To, FileDamageTest, ::testing::Combine(::testing::ValuesIn(INPUTS), ::testing::Range(0, 8)),
                         [](const auto& test) {
                             return std::string(std::get<Input>(test.param).label) + DAMAGES[std::get<int>(test.param)];
                         });
