#include "Statement.h"

namespace DBStore
{
namespace
{
constexpr const char* READ_VALUE = "SELECT Value FROM KeyValue WHERE Key = ?";
constexpr const char* WRITE_VALUE =
    "INSERT INTO KeyValue (Key, Value) VALUES (?1, ?2) ON CONFLICT (Key) DO UPDATE SET Value = excluded.Value";
}  // namespace

int ReadKeyValue(const std::string& key, std::string* value, const ConnectionPtr& connection)
{
    value->clear();
    const StatementPtr statement = internal::Prepare(connection, READ_VALUE, WAIT_LIMIT_MS);
    internal::Bind(statement, 1, std::string_view(key));
    return statement ? statement->RunForText(*value) : FAILURE;
}

int WriteKeyValue(const std::string& key, const std::string& value, const ConnectionPtr& connection)
{
    const StatementPtr statement = internal::Prepare(connection, WRITE_VALUE, WAIT_LIMIT_MS);
    internal::Bind(statement, 1, std::string_view(key));
    internal::Bind(statement, 2, std::string_view(value));
    return ExecuteStmt(connection, statement, nullptr, nullptr, WAIT_LIMIT_MS);
}
}  // namespace DBStore
