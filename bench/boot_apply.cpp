// What the boot pays for applying the staged configuration: the library, and beside it, in turn, the same statements
// run through SQLite's own interface on a copy of the same tables.
#include <benchmark/benchmark.h>
#include <sqlite3.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "BootApply.h"
#include "HostUtil.h"
#include "NimbSchemaStore.h"
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

/// A connection of SQLite's own, with the settings that the stores have.
class RawConnection
{
public:
    explicit RawConnection(const std::string& file)
    {
        Require(sqlite3_open_v2(file.c_str(), &database_, SQLITE_OPEN_READWRITE, nullptr) == SQLITE_OK, "open");
        Run("PRAGMA journal_mode = TRUNCATE");
        Run("PRAGMA synchronous = FULL");
    }
    ~RawConnection() { sqlite3_close(database_); }
    RawConnection(const RawConnection&) = delete;
    RawConnection& operator=(const RawConnection&) = delete;

    void Run(const std::string& text, const std::vector<std::string>& values = {})
    {
        sqlite3_stmt* statement = nullptr;
        sqlite3_prepare_v2(database_, text.c_str(), -1, &statement, nullptr);
        int parameter = 0;
        for (const std::string& value : values) {
            sqlite3_bind_text(statement, ++parameter, value.data(), static_cast<int>(value.size()), SQLITE_STATIC);
        }
        while (sqlite3_step(statement) == SQLITE_ROW) {
        }
        const int result = sqlite3_finalize(statement);
        Require(statement != nullptr && result == SQLITE_OK, sqlite3_errmsg(database_));
    }

private:
    sqlite3* database_ = nullptr;
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
    RawConnection schemas(root.File(DBStore::Type::SchemaStore));
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
void FillConfig(RawConnection& store, int rows)
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
void Stage(RawConnection& store, const char* actions)
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

void MarkRaw(RawConnection& store)
{
    std::string text = std::string(sql::MARK_USER_CONFIG) + "(";
    std::vector<std::string> values;
    for (int i = 0; i < EXCLUDED; ++i) {
        text += "(?,?,?,?),";
        values.insert(values.end(), {"nimb", "auth", "roles", std::to_string(i)});
    }
    text.back() = ')';
    store.Run(text, values);
}

void ApplyRaw(const Mode& mode, const ScratchRoot& root)
{
    RawConnection store(root.ConfigStore());
    store.Run("ATTACH ? AS ss", {root.File(DBStore::Type::SchemaStore)});
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

struct Sample
{
    double milliseconds;
    double peakMiB;
};

/// Largest resident size since the count was last set back.
double PeakMiB()
{
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;) {
        if (word == "VmHWM:") {
            double kibibytes = 0;
            status >> kibibytes;
            return kibibytes / 1024;
        }
    }
    return 0;
}

template <typename Work>
Sample Measure(const ScratchRoot& root, Work work)
{
    root.StartFromTemplate();
    sync();  // so that what is written for one does not slow down the other
    std::ofstream("/proc/self/clear_refs") << "5";
    const auto start = std::chrono::steady_clock::now();
    work();
    const std::chrono::duration<double, std::milli> spent = std::chrono::steady_clock::now() - start;
    return {spent.count(), PeakMiB()};
}

Sample Median(std::vector<Sample> samples)
{
    std::sort(samples.begin(), samples.end(),
              [](const Sample& a, const Sample& b) { return a.milliseconds < b.milliseconds; });
    return samples[samples.size() / 2];
}

struct Result
{
    int mode;
    int rows;
    Sample ours;
    Sample floor;
};
std::vector<Result> results;

void BootApply(benchmark::State& state)
{
    const Mode& mode = Modes()[static_cast<std::size_t>(state.range(0))];
    const int rows = static_cast<int>(state.range(1));
    const ScratchRoot root;
    DeclareSchemas(root, rows);
    {
        RawConnection store(root.ConfigStore());
        store.Run("BEGIN");
        FillConfig(store, rows);
        Stage(store, mode.actions);
        store.Run("COMMIT");
    }
    root.KeepAsTemplate();
    std::vector<Sample> ours;
    std::vector<Sample> floor;
    for ([[maybe_unused]] auto iteration : state) {
        // In turns, so that neither always runs in the wake of the other's writes.
        if (floor.size() % 2 == 0) {
            floor.push_back(Measure(root, [&] { ApplyRaw(mode, root); }));
            ours.push_back(Measure(root, [&] { ApplyWithTheLibrary(mode); }));
        } else {
            ours.push_back(Measure(root, [&] { ApplyWithTheLibrary(mode); }));
            floor.push_back(Measure(root, [&] { ApplyRaw(mode, root); }));
        }
        state.SetIterationTime(ours.back().milliseconds / 1000);
    }
    const Result result = {mode.number, rows, Median(ours), Median(floor)};
    results.push_back(result);
    state.counters["floor_ms"] = result.floor.milliseconds;
    state.counters["ratio"] = result.ours.milliseconds / result.floor.milliseconds;
}

void PrintSummary()
{
    std::printf("\n%4s %8s %12s %12s %7s %9s %14s %12s\n", "mode", "rows", "library ms", "floor ms", "ratio",
                "exponent", "library MiB", "floor MiB");
    for (std::size_t i = 0; i < results.size(); ++i) {
        const Result& now = results[i];
        std::string exponent = "-";
        if (i > 0 && results[i - 1].mode == now.mode) {
            const double growth = now.ours.milliseconds / results[i - 1].ours.milliseconds;
            exponent = std::to_string(std::log(growth) / std::log(double(now.rows) / results[i - 1].rows)).substr(0, 4);
        }
        std::printf("%4d %8d %12.2f %12.2f %7.3f %9s %14.1f %12.1f\n", now.mode, now.rows, now.ours.milliseconds,
                    now.floor.milliseconds, now.ours.milliseconds / now.floor.milliseconds, exponent.c_str(),
                    now.ours.peakMiB, now.floor.peakMiB);
    }
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
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    PrintSummary();
    return 0;
}
