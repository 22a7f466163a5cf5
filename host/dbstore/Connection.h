#pragma once

#include <sqlite3.h>

#include <memory>
#include <string>
#include <unordered_map>

#include "DBStore.h"

namespace DBStore
{
struct CloseDatabase
{
    void operator()(sqlite3* database) const noexcept { sqlite3_close(database); }
};
using DatabaseHandle = std::unique_ptr<sqlite3, CloseDatabase>;

struct FinalizeStatement
{
    void operator()(sqlite3_stmt* statement) const noexcept { sqlite3_finalize(statement); }
};
using StatementHandle = std::unique_ptr<sqlite3_stmt, FinalizeStatement>;

/// Prepared statements by their text. One in use is a node of its own, which goes from map to user and back as it is.
using StatementMap = std::unordered_map<std::string, StatementHandle>;
using PreparedStatement = StatementMap::node_type;

/// The settings that every connection has: no code from the file is trusted, the wait limit applies.
void Configure(sqlite3* database);

/// Opens a database file (real path) with the store's settings and reads its catalogue once, which also undoes what
/// a crash left half done. Null, with SQLite's message in @p reason, when any of it fails.
DatabaseHandle OpenDatabase(const std::string& realPath, int flags, std::string& reason);

/// Runs one or more statements without parameters; the result is SQLite's.
int RunSql(const DatabaseHandle& database, const char* sql);

/// Text of one value of one row; empty when there is none.
std::string QueryText(const DatabaseHandle& database, const char* sql);

/// One open store and its idle prepared statements.
class StoreConnection
{
public:
    explicit StoreConnection(DatabaseHandle database);
    StoreConnection(const StoreConnection&) = delete;
    StoreConnection& operator=(const StoreConnection&) = delete;

    sqlite3* Database() const { return database_.get(); }
    void SetWaitLimit(int milliseconds);

    /// Says where a transaction of the users begins and where it ends.
    void SetInTransaction(bool inTransaction);

    /// True from when the database has rolled a transaction back by itself, as SQLite does when the disk is full or
    /// fails, until the transaction's end: what ran now would be committed at once. The first to ask is logged.
    bool HasLostTransaction()
    {
        return inTransaction_ && sqlite3_get_autocommit(database_.get()) != 0 && LogLostTransaction();
    }

    /// True when the file was removed or replaced since it was opened.
    bool HasMoved() const;

    /// A prepared statement, idle until now; empty, after a log line, when the text does not prepare.
    PreparedStatement Take(const std::string& sql);

    /// Keeps a statement that nobody uses any more for the next one who prepares its text.
    void GiveBack(PreparedStatement statement);

private:
    PreparedStatement PrepareAnew(const std::string& sql);
    bool LogLostTransaction();

    DatabaseHandle database_;
    int waitLimitMs_ = WAIT_LIMIT_MS;  // Configure sets it
    bool inTransaction_ = false;
    bool lossLogged_ = false;
    StatementMap idle_;  // destroyed, so finalised, before the database closes
};

/// One line at priority 0; a very long statement is cut.
void LogStatementFailure(const char* reason, const char* sql);
}  // namespace DBStore
