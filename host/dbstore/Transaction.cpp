#include "Connection.h"

namespace DBStore
{
int BeginTransaction(const ConnectionPtr& connection)
{
    const int result = Execute(connection, "BEGIN IMMEDIATE", WAIT_LIMIT_MS);
    if (result == SUCCESS) {
        connection->SetInTransaction(true);
    }
    return result;
}

int CommitTransaction(const ConnectionPtr& connection)
{
    const int result = Execute(connection, "COMMIT", WAIT_LIMIT_MS);
    if (result == SUCCESS) {
        connection->SetInTransaction(false);
    }
    return result;
}

int CancelTransaction(const ConnectionPtr& connection)
{
    // SQLite itself rolls back after some failures (a full disk, say); there is then nothing left to cancel.
    const bool isOver = connection && sqlite3_get_autocommit(connection->Database()) != 0;
    const int result = isOver ? SUCCESS : Execute(connection, "ROLLBACK", WAIT_LIMIT_MS);
    if (result == SUCCESS) {
        connection->SetInTransaction(false);
    }
    return result;
}
}  // namespace DBStore
