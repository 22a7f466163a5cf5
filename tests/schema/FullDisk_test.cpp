#include <gmock/gmock.h>

#include <string>

#include "BootHost.h"
#include "NimbConfigStore.h"
#include "StoreDisk.h"
#include "StoreFiles.h"

using NimbConfigStore::ProcessSchemas;
using testing::AnyOf;

// The disk fills up while the schemas of a new image are registered, for good or until a moment later.
namespace
{
std::string Schema(const std::string& key)
{
    return R"({"component": "nimb", "group": "network", "key": ")" + key +
           R"(", "dspIntegrated": true, "schema": {"type": "object", "description": ")" + std::string(30000, 'x') +
           R"("}})";
}

std::string Default(const std::string& group, const std::string& key)
{
    return R"({"component": "nimb", "group": ")" + group + R"(", "key": ")" + key + R"(", "config": {"note": ")" +
           std::string(30000, 'x') + R"("}})";
}

class RegistrationOnFullDiskTest : public BootHostTest, public testing::WithParamInterface<bool>
{
protected:
    /// The next image: one package is new, one has a version with other schemas and default configuration.
    RegistrationOnFullDiskTest()
    {
        Host().WithPackage("net-core", "1.1.0_1.0", "[" + Schema("dns") + "," + Schema("ntp") + "]");
        // Of objects that the old schemas know too: what can be written does not depend on which of them stand.
        Host().WithDefaultConfig("net-core", "1.1.0_1.0",
                                 "[" + Default("network", "dns") + "," + Default("system", "keyboard") + "]");
        Host().WithPackage("extra", "1.0.0_1.0", "[" + Schema("extra") + "]");
    }

    std::string Schemas() { return DumpStore(DBStore::Type::SchemaStore); }

    /// Without the version, which is that of the schemas, old or new.
    std::string Defaults() { return Host().SqlValue("SELECT group_concat(Name || Value) FROM DefaultConfig"); }

    bool Processes(int growths)
    {
        StoreDisk disk;
        disk.FillUpAfter(growths, GetParam() ? StoreDisk::ALL : 1);
        return ProcessSchemas({});
    }
};

std::string NameOf(const testing::TestParamInfo<bool>& info)
{
    return info.param ? "ForGood" : "ForAMoment";
}
}  // namespace

TEST_P(RegistrationOnFullDiskTest, SchemasAndDefaultConfigurationAreEachTheOldOnesOrTheNew)
{
    const std::string schemaFile = Host().ReadFile(DBStore::StorePath(DBStore::Type::SchemaStore));
    const std::string configFile = Host().ReadFile(STORE);
    const std::string oldSchemas = Schemas();
    const std::string oldDefaults = Defaults();
    ASSERT_TRUE(ProcessSchemas({}));
    const std::string newSchemas = Schemas();
    const std::string newDefaults = Defaults();
    int growths = 0;
    for (bool processed = false; !processed; ++growths) {
        Host().WriteFile(DBStore::StorePath(DBStore::Type::SchemaStore), schemaFile).WriteFile(STORE, configFile);
        processed = Processes(growths);
        ASSERT_THAT(Schemas(), AnyOf(oldSchemas, newSchemas)) << growths;
        ASSERT_THAT(Defaults(), AnyOf(oldDefaults, newDefaults)) << growths;
    }
    EXPECT_GT(growths, 10);
    EXPECT_EQ(Schemas(), newSchemas);
    EXPECT_EQ(Defaults(), newDefaults);
}

INSTANTIATE_TEST_SUITE_P(Of, RegistrationOnFullDiskTest, testing::Bool(), NameOf);
