#include "Connection.h"

#include <algorithm>
#include <map>
#include <string_view>
#include <tuple>
#include <utility>

#include "CSLogger.h"
#include "HostUtil.h"
#include "StoreTables.h"

namespace DBStore
{
namespace
{
// Texts completed at run time differ from call to call; these bounds keep them from piling up.
constexpr std::size_t MAX_IDLE_STATEMENTS = 128;
constexpr std::size_t MAX_KEPT_TEXT = 4096;
constexpr int MAX_LOGGED_TEXT = 1000;

using ConnectionKey = std::tuple<Type, bool, std::string>;
using LiveConnections = std::map<ConnectionKey, std::weak_ptr<StoreConnection>>;

LiveConnections& LiveConnectionsOfThread()
{
    thread_local LiveConnections connections;
    return connections;
}

ConnectionPtr FindLive(const ConnectionKey& key)
{
    LiveConnections& live = LiveConnectionsOfThread();
    const auto found = live.find(key);
    if (found == live.end()) {
        return nullptr;
    }
    ConnectionPtr connection = found->second.lock();
    return connection && !connection->HasMoved() ? connection : nullptr;
}

bool OnlySeparators(std::string_view rest)
{
    return rest.find_first_not_of(" \t\r\n;") == std::string_view::npos;
}

ConnectionPtr OpenStore(const StoreDefinition& definition, const std::string& realPath, bool writable)
{
    // A read-only handle opens for writing all the same: it may have to undo what a crash left half done.
    std::string reason;
    DatabaseHandle database = OpenDatabase(realPath, SQLITE_OPEN_READWRITE, reason);
    if (database && !writable && RunSql(database, "PRAGMA query_only = ON") != SQLITE_OK) {
        reason = sqlite3_errmsg(database.get());
        database.reset();
    }
    if (!database) {
        CSLogger::Log(CSLogger::ERROR, "Cannot open store database %s: %s", definition.path, reason.c_str());
        return nullptr;
    }
    return std::make_shared<StoreConnection>(std::move(database));
}
}  // namespace

void Configure(sqlite3* database)
{
    sqlite3_db_config(database, SQLITE_DBCONFIG_DQS_DML, 1, nullptr);
    sqlite3_db_config(database, SQLITE_DBCONFIG_DQS_DDL, 1, nullptr);
    sqlite3_db_config(database, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    sqlite3_db_config(database, SQLITE_DBCONFIG_ENABLE_LOAD_EXTENSION, 0, nullptr);
    sqlite3_db_config(database, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    sqlite3_busy_timeout(database, WAIT_LIMIT_MS);
}

DatabaseHandle OpenDatabase(const std::string& realPath, int flags, std::string& reason)
{
    sqlite3* opened = nullptr;
    const int result = sqlite3_open_v2(realPath.c_str(), &opened, flags | SQLITE_OPEN_URI, nullptr);
    DatabaseHandle database(opened);
    if (result == SQLITE_OK) {
        Configure(opened);
        // The page size counts only where the file is still empty.
        if (RunSql(database,
                   "PRAGMA page_size = 16384; PRAGMA journal_mode = TRUNCATE; PRAGMA synchronous = FULL; "
                   "SELECT 1 FROM sqlite_schema LIMIT 1") == SQLITE_OK) {
            return database;
        }
    }
    reason = opened != nullptr ? sqlite3_errmsg(opened) : sqlite3_errstr(result);
    return nullptr;
}

int RunSql(const DatabaseHandle& database, const char* sql)
{
    return sqlite3_exec(database.get(), sql, nullptr, nullptr, nullptr);
}

std::string QueryText(const DatabaseHandle& database, const char* sql)
{
    std::string text;
    sqlite3_exec(
        database.get(), sql,
        [](void* context, int, char** values, char**) {
            static_cast<std::string*>(context)->assign(values[0] != nullptr ? values[0] : "");
            return 1;
        },
        &text, nullptr);
    return text;
}

void LogStatementFailure(const char* reason, const char* sql)
{
    CSLogger::Log(CSLogger::ERROR, "Store statement failed: %s: %.*s", reason, MAX_LOGGED_TEXT, sql);
}

StoreConnection::StoreConnection(DatabaseHandle database) : database_(std::move(database)) {}

bool StoreConnection::HasMoved() const
{
    int moved = 0;
    sqlite3_file_control(database_.get(), "main", SQLITE_FCNTL_HAS_MOVED, &moved);
    return moved != 0;
}

void StoreConnection::SetWaitLimit(int milliseconds)
{
    if (milliseconds != waitLimitMs_) {
        sqlite3_busy_timeout(database_.get(), milliseconds);
        waitLimitMs_ = milliseconds;
    }
}

void StoreConnection::SetInTransaction(bool inTransaction)
{
    inTransaction_ = inTransaction;
    lossLogged_ = false;
}

bool StoreConnection::LogLostTransaction()
{
    if (!std::exchange(lossLogged_, true)) {
        CSLogger::Log(CSLogger::ERROR,
                      "Store transaction lost: the database rolled it back, nothing more of it is run");
    }
    return true;
}

PreparedStatement StoreConnection::Take(const std::string& sql)
{
    PreparedStatement idle = idle_.extract(sql);
    return idle.empty() ? PrepareAnew(sql) : std::move(idle);
}

PreparedStatement StoreConnection::PrepareAnew(const std::string& sql)
{
    sqlite3_stmt* prepared = nullptr;
    const char* rest = nullptr;
    const int result = sqlite3_prepare_v3(database_.get(), sql.c_str(), static_cast<int>(sql.size()) + 1,
                                          SQLITE_PREPARE_PERSISTENT, &prepared, &rest);
    StatementHandle statement(prepared);
    if (result != SQLITE_OK) {
        LogStatementFailure(sqlite3_errmsg(database_.get()), sql.c_str());
        return {};
    }
    if (!statement || !OnlySeparators(rest)) {
        LogStatementFailure("not one statement", sql.c_str());
        return {};
    }
    StatementMap made;
    return made.extract(made.emplace(sql, std::move(statement)).first);
}

void StoreConnection::GiveBack(PreparedStatement statement)
{
    sqlite3_reset(statement.mapped().get());
    sqlite3_clear_bindings(statement.mapped().get());
    if (idle_.size() < MAX_IDLE_STATEMENTS && statement.key().size() <= MAX_KEPT_TEXT) {
        idle_.insert(std::move(statement));
    }
}

ConnectionPtr GetConnection(Type type, bool writable)
{
    const StoreDefinition* definition = DefinitionOf(type);
    if (definition == nullptr) {
        CSLogger::Log(CSLogger::ERROR, "Cannot open store database: %d is no store", static_cast<int>(type));
        return nullptr;
    }
    const std::string realPath = HostPath(definition->path);
    if (ConnectionPtr shared = FindLive({type, true, realPath})) {
        return shared;
    }
    ConnectionPtr connection = writable ? nullptr : FindLive({type, false, realPath});
    if (!connection) {
        connection = OpenStore(*definition, realPath, writable);
        std::erase_if(LiveConnectionsOfThread(), [](const auto& entry) { return entry.second.expired(); });
        LiveConnectionsOfThread()[{type, writable, realPath}] = connection;
    }
    return connection;
}
}  // namespace DBStore
