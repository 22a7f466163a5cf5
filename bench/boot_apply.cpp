// What the boot pays for applying the staged configuration: the library, and beside it, in turn, the same statements
// run through SQLite's own interface on a copy of the same tables.
#include <unistd.h>

#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include "BootApply.h"
#include "Comparison.h"
#include "HostUtil.h"
#include "NimbSchemaStore.h"
#include "RawDatabase.h"
#include "StoreStatements.h"

namespace fs = std::filesystem;
namespace sql = NimbConfigStore::Statements;

namespace
{
constexpr int EXCLUDED = 10;
constexpr int INSTANCES = 20;  // rows of one object

void Require(bool held, const char* what)
{
    if (!held) {
        throw std::runtime_error(what);
    }
}

/// A root in the temporary folder, removed at the end.
class ScratchRoot
{
public:
    ScratchRoot() : path_((fs::temp_directory_path() / "boot-apply-XXXXXX").string())
    {
        Require(mkdtemp(path_.data()) != nullptr, "no scratch folder");
        fs::create_directories(path_ + "/var/log/talvor");
        SetHostRoot(path_);
        Require(DBStore::CreateDatabases() == DBStore::SUCCESS, "no databases");
    }
    ~ScratchRoot()
    {
        SetHostRoot("/");
        std::error_code ignored;
        fs::remove_all(path_, ignored);
    }
    ScratchRoot(const ScratchRoot&) = delete;
    ScratchRoot& operator=(const ScratchRoot&) = delete;

    std::string File(DBStore::Type type) const { return path_ + DBStore::StorePath(type); }
    std::string ConfigStore() const { return File(DBStore::Type::ConfigStore); }

    void KeepAsTemplate() const { fs::copy_file(ConfigStore(), ConfigStore() + ".template"); }
    void StartFromTemplate() const
    {
        fs::copy_file(ConfigStore() + ".template", ConfigStore(), fs::copy_options::overwrite_existing);
    }

private:
    std::string path_;
};

// ---- The store ----------------------------------------------------------------------------------------------------

std::string Numbers(int count)
{
    return "WITH RECURSIVE n (i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE i + 1 < " + std::to_string(count) +
           ") ";
}

/// Objects that are shared with a SmartNIC, and one whose instances a whole document leaves alone.
void DeclareSchemas(const ScratchRoot& root, int rows)
{
    RawDatabase schemas(root.File(DBStore::Type::SchemaStore));
    schemas.Run("BEGIN");
    schemas.Run(
        Numbers(rows / INSTANCES) +
        "INSERT INTO ConfigSchema (Component, ConfigGroup, Name, DSPIntegrated, Singleton, SchemaJson) "
        "SELECT 'nimb', 'group' || (i % 20), 'object' || i, 1, 0, '{\"component\": \"nimb\", \"group\": \"group' "
        "|| (i % 20) || '\", \"key\": \"object' || i || '\", \"singleton\": false, \"schema\": {\"type\": "
        "\"object\", \"properties\": {\"id\": {\"type\": \"string\", \"instanceId\": true}}}}' FROM n");
    schemas.Run(Numbers(rows / INSTANCES) +
                "INSERT INTO SmartnicSchema SELECT 'nimb', 'group' || (i % 20), 'object' || "
                "i, 'nimb-shared' FROM n WHERE i % 10 = 0");
    schemas.Run("COMMIT");
    std::string excluded;
    for (int i = 0; i < EXCLUDED; ++i) {
        excluded += (i > 0 ? ",\"" : "\"") + std::to_string(i) + "\"";
    }
    const std::string element =
        R"({"component": "nimb", "group": "auth", "key": "roles", "singleton": false, )"
        R"("schemaType": 5, "schema": {"properties": {"id": {"type": "string", "instanceId": true}}}, )"
        R"("excludedInstances": [)" +
        excluded + "]}";
    const auto store = NimbSchemaStore::SchemaStore::GetStore(true);
    NimbSchemaStore::SetSchema("bench-1.0.0_1.0", "nimb", "auth", "roles", element, store, false);
    NimbSchemaStore::RemoveUndeclaredSchemas({}, store);
}

/// Rows of twenty instances an object; what an ordinary boot finds, so already folded once.
void FillConfig(RawDatabase& store, int rows)
{
    store.Run(Numbers(rows) +
              "INSERT INTO Config (Component, ConfigGroup, Name, Identifier, Version, Success, UserValue, VitalValue) "
              "SELECT 'nimb', 'group' || ((i / 20) % 20), 'object' || (i / 20), 'instance' || (i % 20), '1.0.0', 1, "
              "'{\"value\": \"' || hex(zeroblob(150)) || '\"}', '{\"key\": \"' || hex(zeroblob(20)) || '\"}' FROM n");
    store.Run("UPDATE Config SET DesiredValue = '{\"value\": 1}' WHERE rowid % 50 = 0");
    store.Run(
        "INSERT INTO DefaultConfig (Component, ConfigGroup, Name, Identifier, Version, Value) SELECT Component, "
        "ConfigGroup, Name, Identifier, Version, UserValue FROM Config WHERE Identifier < 'instance3'");
}

/// Stages a tenth as many rows: of every tenth object, which is a shared one, most instances and a new one.
void Stage(RawDatabase& store, const char* actions)
{
    store.Run(std::string("INSERT INTO DesiredUserConfig (Component, ConfigGroup, Name, Identifier, Version, Value, "
                          "BootAction) SELECT Component, ConfigGroup, Name, CASE Identifier WHEN 'instance9' THEN "
                          "'added' ELSE Identifier END, Version, '{\"value\": \"' || hex(zeroblob(140)) || '\"}', ") +
              actions + " FROM Config WHERE CAST(substr(Name, 7) AS INTEGER) % 10 = 0");
}

// ---- The steps ----------------------------------------------------------------------------------------------------

struct Mode
{
    int number;
    void (*apply)(const DBStore::ConnectionPtr&);
    const char* actions;  // SQL for the BootAction of a staged row
    std::vector<const char*> statements;
};

const std::vector<Mode>& Modes()
{
    static const std::vector<Mode> modes = {
        {1,
         NimbConfigStore::ApplyDesiredDocumentConfig,
         "'SET'",
         {sql::INSERT_STAGED, sql::UPDATE_FROM_STAGED, sql::EMPTY_STAGING_AFTER_APPLY, sql::DELETE_MARKED}},
        {3,
         NimbConfigStore::ApplySmartnicBootConfig,
         "CASE CAST(substr(Name, 7) AS INTEGER) / 10 % 10 WHEN 0 THEN 'DELETE' WHEN 1 THEN 'SET_DEFAULT' ELSE 'SET' "
         "END",
         {sql::DELETE_STAGED_OBJECTS, sql::RESTORE_DEFAULTS, sql::INSERT_SMARTNIC_ROWS, sql::UPDATE_SMARTNIC_ROWS,
          sql::DELETE_UNSTAGED_SHARED_ROWS}},
        {4,
         NimbConfigStore::ApplyHostApiConfig,
         "CASE CAST(substr(Name, 7) AS INTEGER) / 10 % 10 WHEN 0 THEN 'DELETE' WHEN 1 THEN 'SET_DEFAULT' WHEN 2 THEN "
         "'DELETE_INSTANCE' ELSE 'SET' END",
         {sql::MARK_STAGED_INSTANCES, sql::MARK_STAGED_OBJECTS, sql::INSERT_SET_ROWS, sql::UPDATE_SET_ROWS,
          sql::DELETE_MARKED, sql::RESTORE_DEFAULTS}},
    };
    return modes;
}

void ApplyWithTheLibrary(const Mode& mode)
{
    const auto connection = DBStore::GetConnection(DBStore::Type::ConfigStore, true);
    Require(DBStore::AttachSchemaStore(connection) == DBStore::SUCCESS, "attach");
    Require(DBStore::BeginTransaction(connection) == DBStore::SUCCESS, "begin");
    mode.apply(connection);
    NimbConfigStore::FoldDesiredValues(connection);
    Require(DBStore::CommitTransaction(connection) == DBStore::SUCCESS, "commit");
    Require(DBStore::DetachSchemaStore(connection) == DBStore::SUCCESS, "detach");
}

void MarkRaw(RawDatabase& store)
{
    std::string text = std::string(sql::MARK_USER_CONFIG) + "(";
    std::vector<std::string> values;
    for (int i = 0; i < EXCLUDED; ++i) {
        text += "(?,?,?,?),";
        values.insert(values.end(), {"nimb", "auth", "roles", std::to_string(i)});
    }
    text.back() = ')';
    store.Prepare(text);
    store.RunWith(values);
}

void ApplyRaw(const Mode& mode, const ScratchRoot& root)
{
    RawDatabase store(root.ConfigStore());
    store.Run("ATTACH '" + root.File(DBStore::Type::SchemaStore) + "' AS ss");
    store.Run("BEGIN");
    if (mode.number == 1) {
        MarkRaw(store);
    }
    for (const char* statement : mode.statements) {
        store.Run(statement);
    }
    store.Run(sql::FOLD_DESIRED_VALUES);
    store.Run("COMMIT");
    store.Run("DETACH ss");
}

// ---- The measurement ----------------------------------------------------------------------------------------------

template <class Work>
Sample MeasuredFromTemplate(const ScratchRoot& root, Work work)
{
    root.StartFromTemplate();
    return Measured(work);
}

void BootApply(benchmark::State& state)
{
    const Mode& mode = Modes()[static_cast<std::size_t>(state.range(0))];
    const int rows = static_cast<int>(state.range(1));
    const ScratchRoot root;
    DeclareSchemas(root, rows);
    {
        RawDatabase store(root.ConfigStore());
        store.Run("BEGIN");
        FillConfig(store, rows);
        Stage(store, mode.actions);
        store.Run("COMMIT");
    }
    root.KeepAsTemplate();
    Compare(state, {"boot mode " + std::to_string(mode.number), rows,
                    [&] { return MeasuredFromTemplate(root, [&] { ApplyWithTheLibrary(mode); }); },
                    [&] { return MeasuredFromTemplate(root, [&] { ApplyRaw(mode, root); }); }});
}
}  // namespace

int main(int argc, char** argv)
{
    for (int mode = 0; mode < static_cast<int>(Modes().size()); ++mode) {
        for (const int rows : {1000, 10000, 100000}) {
            benchmark::RegisterBenchmark("BootApply", BootApply)
                ->Args({mode, rows})
                ->ArgNames({"mode_index", "rows"})
                ->Iterations(rows == 1000    ? 31
                             : rows == 10000 ? 11
                                             : 5)
                ->UseManualTime()
                ->Unit(benchmark::kMillisecond);
        }
    }
    return RunBenchmarks(argc, argv);
}
