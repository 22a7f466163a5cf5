#pragma once

#include <concepts>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace DBStore
{
// Declared here, where visibility is what the build chooses: who holds a handle sees nothing of what is behind it.
class StoreConnection;
namespace internal
{
class Statement;
}  // namespace internal
}  // namespace DBStore

#pragma GCC visibility push(default)

/// The store databases. Opening a store never creates it; CreateDatabases alone does.
///
/// Results: 0 success, 1 failure; a failure has been logged with the database's own reason. A wait limit is in
/// milliseconds: how long a call waits for a lock that another connection holds before it fails.
///
/// Connections are shared within a thread: while a handle is alive, everyone in the thread who asks for the same
/// store gets the same connection, and so takes part in the same transaction. The last handle closes it.
/// Threads and processes have connections of their own, kept apart by the database's locks. A handle must not be
/// carried across a fork or to another thread.
namespace DBStore
{
/// A store, each a database of its own.
enum class Type : int
{
    ConfigStore = 0,
    SchemaStore = 1,
    DataFileStore = 2,
};

inline constexpr int SUCCESS = 0;           ///< result of a call that did it all
inline constexpr int FAILURE = 1;           ///< result of a call that failed
inline constexpr int WAIT_LIMIT_MS = 3000;  ///< the wait limit that the library uses

using ConnectionPtr = std::shared_ptr<StoreConnection>;  ///< the handle of a connection

/// The logical path of a store's database file.
const char* StorePath(Type type);

/// A connection to the store; null, after a log line, when the store is not there or cannot be opened.
/// A read-only handle (@p writable false) never changes what the store holds; asked for while a writable one is
/// alive it is that one, so that it sees the transaction under way. Asking for a writable handle while only a
/// read-only one is alive opens a second connection. A store whose file was replaced is opened anew.
ConnectionPtr GetConnection(Type type, bool writable);

/// True when the file with this logical path is a consistent store database: every page and index checked, and
/// every table of the store that its base name stands for present ("datafile-store", "schema-store", else the
/// config store). Opens read-only and creates nothing.
bool Check(const char* path);

/// Creates the database files, folders, tables, indexes and planner statistics that are missing in all three
/// stores; what is there stays as it is. Durable on return.
int CreateDatabases();

/// Copies a store that may be in use to the logical path @p path, which it replaces in one step (nothing half
/// written is ever seen under that name; durable on return).
int Backup(Type type, const std::string& path);

/// The same to the store's own place below another host root, the folder @p root of this machine; folders that are
/// missing there are created. What a call does to a store can be tried on such a copy.
int CopyToRoot(Type type, const std::string& root);

/// Attaches the schema store under the schema name "ss"; fails, and creates nothing, when it is not there.
/// Not possible inside a transaction.
int AttachSchemaStore(const ConnectionPtr& connection);
/// Takes it away again; not possible inside a transaction either.
int DetachSchemaStore(const ConnectionPtr& connection);

/// BEGIN IMMEDIATE: the write lock is held from here on. A second Begin on the same connection fails.
/// The database may roll the transaction back by itself, when the disk is full or fails. Every statement that runs on
/// the connection then fails, a Commit and another Begin too, until CancelTransaction; the loss is logged once.
int BeginTransaction(const ConnectionPtr& connection);
/// Durable on success; after a failure the transaction may still be open, and is to be cancelled.
int CommitTransaction(const ConnectionPtr& connection);
/// Rolls back; with no transaction open it does nothing and succeeds.
int CancelTransaction(const ConnectionPtr& connection);

/// Key/value entries of the config store. An absent key reads as success with the empty text.
/// @{
int ReadKeyValue(const std::string& key, std::string* value, const ConnectionPtr& connection);
int WriteKeyValue(const std::string& key, const std::string& value, const ConnectionPtr& connection);
/// @}

/// Called once per row. NULL columns are null pointers. A result other than 0 ends the statement as a failure.
/// It may throw: the statement is reset and the exception passes to the caller.
using RowCallback = int (*)(void* context, int columns, char** values, char** names);

/// Runs one statement that takes no parameters and whose rows, if any, nobody wants.
int Execute(const ConnectionPtr& connection, const char* sql, int waitLimitMs);

using StatementPtr = std::shared_ptr<internal::Statement>;  ///< the handle of a prepared statement

/// Runs a statement; a null statement (failed Prepare) or one with a failed Bind is a failure. Afterwards the
/// statement has no bindings; it can be bound and run again.
int ExecuteStmt(const ConnectionPtr& connection, const StatementPtr& statement, RowCallback callback, void* context,
                int waitLimitMs);

namespace internal
{
/// Prepares one statement. Statements are kept per connection by their text, so preparing a text again costs a
/// look-up. Null, after one log line, when the text does not prepare.
StatementPtr Prepare(const ConnectionPtr& connection, const std::string& sql, int waitLimitMs);

/// Binds parameter @p index (from 1). The text is not copied: it must live until the statement has run.
/// False, after one log line, on failure; running the statement then fails as well. A null statement gives false.
/// @{
bool Bind(const StatementPtr& statement, int index, std::string_view text);
bool Bind(const StatementPtr& statement, int index, std::int64_t number);
bool BindNull(const StatementPtr& statement, int index);
/// @}

/// NULL when there is no text. A template, so that a plain text is no candidate for it.
template <std::same_as<std::optional<std::string>> Text>
bool Bind(const StatementPtr& statement, int index, const Text& text)
{
    return text ? Bind(statement, index, std::string_view(*text)) : BindNull(statement, index);
}
}  // namespace internal
}  // namespace DBStore

#pragma GCC visibility pop
