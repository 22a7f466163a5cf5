#pragma once

#include <gmock/gmock.h>

#include "BootApply.h"
#include "NimbSchemaStore.h"
#include "TestHost.h"
#include "Thrown.h"

using NimbConfigStore::ApplyDesiredDocumentConfig;
using NimbConfigStore::ApplyHostApiConfig;
using NimbConfigStore::ApplySmartnicBootConfig;
using NimbConfigStore::FoldDesiredValues;

/// A host with stores and schemas on which one apply is run as the boot runs it.
class ApplyTest : public HostTest
{
protected:
    using Applier = void (*)(const DBStore::ConnectionPtr&);

    ApplyTest() { Host().WithStores(); }

    /// Declares an object of component "nimb" and group "g" with these further members of a schema element.
    void Declare(const std::string& key, const std::string& members)
    {
        const std::string element =
            R"({"component": "nimb", "group": "g", "key": ")" + key + R"(", "schema": )" +
            R"({"type": "object", "properties": {"id": {"type": "string", "instanceId": true}, )" +
            R"("cs_generated_id": {"type": "string"}}}, "dspIntegrated": true)" + members + "}";
        const bool hasSmartnic = members.find("smartnic") != std::string::npos;
        const auto store = NimbSchemaStore::SchemaStore::GetStore(true);
        NimbSchemaStore::SetSchema("pkg-1.0.0_1.0", "nimb", "g", key, element, store, hasSmartnic);
        NimbSchemaStore::RemoveUndeclaredSchemas({}, store);
    }

    /// Rows, as SQL writes lists of values: key, user value, vital value (and staged action or default's version).
    void Config(const std::string& values)
    {
        Host().Sql("INSERT INTO Config (Component, ConfigGroup, Name, Identifier, UserValue, VitalValue) VALUES " +
                   values);
    }
    void Stage(const std::string& values)
    {
        Host().Sql(
            "INSERT INTO DesiredUserConfig (Component, ConfigGroup, Name, Identifier, Value, VitalValue, "
            "BootAction) VALUES " +
            values);
    }
    void Default(const std::string& values)
    {
        Host().Sql(
            "INSERT INTO DefaultConfig (Component, ConfigGroup, Name, Identifier, Value, VitalValue, Version) "
            "VALUES " +
            values);
    }

    /// Every row as "name/identifier user vital".
    std::vector<std::string> Rows()
    {
        std::vector<std::string> rows;
        for (const Row& row : Host().Sql(
                 "SELECT Name || '/' || COALESCE(Identifier, 'NULL') || ' ' || COALESCE(UserValue, 'NULL') || ' ' || "
                 "COALESCE(VitalValue, 'NULL') FROM Config ORDER BY Name, Identifier, UserValue")) {
            rows.push_back(*row[0]);
        }
        return rows;
    }

    /// Everything in the tables that an apply may change.
    std::vector<Row> Everything()
    {
        std::vector<Row> all = Host().Sql("SELECT * FROM Config ORDER BY rowid");
        const std::vector<Row> staged = Host().Sql("SELECT * FROM DesiredUserConfig ORDER BY rowid");
        all.insert(all.end(), staged.begin(), staged.end());
        return all;
    }

    std::string StagedRows() { return Host().SqlValue("SELECT COUNT(*) FROM DesiredUserConfig"); }

    /// What the apply threw; "nothing" when it was committed. A failed one is cancelled.
    std::string Apply(Applier apply)
    {
        const auto connection = DBStore::GetConnection(DBStore::Type::ConfigStore, true);
        EXPECT_EQ(DBStore::AttachSchemaStore(connection), DBStore::SUCCESS);
        EXPECT_EQ(DBStore::BeginTransaction(connection), DBStore::SUCCESS);
        const std::string thrown = ThrownBy([&] { apply(connection); });
        const bool applied = thrown == "nothing";
        EXPECT_EQ(applied ? DBStore::CommitTransaction(connection) : DBStore::CancelTransaction(connection),
                  DBStore::SUCCESS);
        EXPECT_EQ(DBStore::DetachSchemaStore(connection), DBStore::SUCCESS);
        return thrown;
    }
};

/// A step of an apply that a trigger makes fail, and what the apply then says.
struct FailingStep
{
    const char* trigger;  // when it fires, and on what
    const char* message;
};

inline void PrintTo(const FailingStep& step, std::ostream* out)
{
    *out << step.trigger;
}
