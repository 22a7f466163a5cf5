#include "RunStatement.h"

#include "ConfigStoreException.h"

namespace NimbConfigStore
{
bool RunStatement(const DBStore::ConnectionPtr& connection, const std::string& sql, const std::vector<BoundText>& texts,
                  DBStore::RowCallback callback, void* context)
{
    const DBStore::StatementPtr statement = DBStore::internal::Prepare(connection, sql, DBStore::WAIT_LIMIT_MS);
    int parameter = 0;
    for (const BoundText& text : texts) {
        ++parameter;
        // A failed bind, or a statement that did not prepare, fails when it is run.
        (void)(text ? DBStore::internal::Bind(statement, parameter, *text)
                    : DBStore::internal::BindNull(statement, parameter));
    }
    return DBStore::ExecuteStmt(connection, statement, callback, context, DBStore::WAIT_LIMIT_MS) == DBStore::SUCCESS;
}

void RunOrThrow(const DBStore::ConnectionPtr& connection, const std::string& sql, const char* failure,
                const std::vector<BoundText>& texts, DBStore::RowCallback callback, void* context)
{
    if (!RunStatement(connection, sql, texts, callback, context)) {
        throw ConfigStoreException(CS_ERROR_OPERATION, failure);
    }
}
}  // namespace NimbConfigStore
