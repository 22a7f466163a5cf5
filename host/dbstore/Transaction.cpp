#include "Connection.h"

namespace DBStore
{
int BeginTransaction(const ConnectionPtr& connection)
{
    return Execute(connection, "BEGIN IMMEDIATE", WAIT_LIMIT_MS);
}

int CommitTransaction(const ConnectionPtr& connection)
{
    return Execute(connection, "COMMIT", WAIT_LIMIT_MS);
}

int CancelTransaction(const ConnectionPtr& connection)
{
    // SQLite itself rolls back after some failures (a full disk, say); there is then nothing left to cancel.
    if (connection && sqlite3_get_autocommit(connection->Database()) != 0) {
        return SUCCESS;
    }
    return Execute(connection, "ROLLBACK", WAIT_LIMIT_MS);
}
}  // namespace DBStore
