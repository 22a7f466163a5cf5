#include "Statement.h"

#include <utility>

namespace DBStore
{
namespace internal
{
namespace
{
class ResetAfterwards
{
public:
    ResetAfterwards(sqlite3_stmt* statement, bool& bindFailed) : statement_(statement), bindFailed_(bindFailed) {}
    ~ResetAfterwards()
    {
        sqlite3_reset(statement_);
        sqlite3_clear_bindings(statement_);
        bindFailed_ = false;
    }
    ResetAfterwards(const ResetAfterwards&) = delete;
    ResetAfterwards& operator=(const ResetAfterwards&) = delete;

private:
    sqlite3_stmt* statement_;
    bool& bindFailed_;
};
}  // namespace

Statement::Statement(ConnectionPtr connection, PreparedStatement prepared)
    : connection_(std::move(connection)), prepared_(std::move(prepared)), handle_(prepared_.mapped().get())
{}

Statement::~Statement()
{
    connection_->GiveBack(std::move(prepared_));
}

bool Statement::Bound(int result)
{
    if (result != SQLITE_OK) {
        LogStatementFailure(sqlite3_errmsg(connection_->Database()), sqlite3_sql(handle_));
        bindFailed_ = true;
    }
    return result == SQLITE_OK;
}

bool Statement::BindText(int index, std::string_view text)
{
    const char* start = text.data() != nullptr ? text.data() : "";  // a null pointer would bind NULL
    return Bound(sqlite3_bind_text64(handle_, index, start, text.size(), SQLITE_STATIC, SQLITE_UTF8));
}

bool Statement::BindNumber(int index, std::int64_t number)
{
    return Bound(sqlite3_bind_int64(handle_, index, number));
}

bool Statement::BindNothing(int index)
{
    return Bound(sqlite3_bind_null(handle_, index));
}

int Statement::Run(RowCallback callback, void* context)
{
    const ResetAfterwards reset(handle_, bindFailed_);
    return MayRun() ? Step(callback, context) : FAILURE;
}

int Statement::RunForText(std::string& text)
{
    const ResetAfterwards reset(handle_, bindFailed_);
    if (!MayRun()) {
        return FAILURE;
    }
    const int result = sqlite3_step(handle_);
    if (result == SQLITE_ROW && sqlite3_column_type(handle_, 0) != SQLITE_NULL) {
        const unsigned char* bytes = sqlite3_column_text(handle_, 0);
        text.assign(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(sqlite3_column_bytes(handle_, 0)));
    } else if (result != SQLITE_ROW && result != SQLITE_DONE) {
        LogStatementFailure(sqlite3_errmsg(connection_->Database()), sqlite3_sql(handle_));
        return FAILURE;
    }
    return SUCCESS;
}

int Statement::Step(RowCallback callback, void* context)
{
    int result = sqlite3_step(handle_);
    names_.clear();  // they are the statement's own until it is prepared anew, which the first step may do
    while (result == SQLITE_ROW) {
        if (callback != nullptr && !HandOver(callback, context)) {
            LogStatementFailure("ended by its caller", sqlite3_sql(handle_));
            return FAILURE;
        }
        result = sqlite3_step(handle_);
    }
    if (result != SQLITE_DONE) {
        LogStatementFailure(sqlite3_errmsg(connection_->Database()), sqlite3_sql(handle_));
        return FAILURE;
    }
    return SUCCESS;
}

bool Statement::HandOver(RowCallback callback, void* context)
{
    // The callback has the shape of sqlite3_exec's, which takes texts that are not const.
    const int columns = sqlite3_column_count(handle_);
    for (int i = static_cast<int>(names_.size()); i < columns; ++i) {
        names_.push_back(const_cast<char*>(sqlite3_column_name(handle_, i)));
    }
    values_.clear();
    for (int i = 0; i < columns; ++i) {
        values_.push_back(reinterpret_cast<char*>(const_cast<unsigned char*>(sqlite3_column_text(handle_, i))));
    }
    return callback(context, columns, values_.data(), names_.data()) == 0;
}

StatementPtr Prepare(const ConnectionPtr& connection, const std::string& sql, int waitLimitMs)
{
    if (!connection) {
        return nullptr;
    }
    connection->SetWaitLimit(waitLimitMs);
    PreparedStatement prepared = connection->Take(sql);
    return prepared ? std::make_shared<Statement>(connection, std::move(prepared)) : nullptr;
}

bool Bind(const StatementPtr& statement, int index, std::string_view text)
{
    return statement && statement->BindText(index, text);
}

bool Bind(const StatementPtr& statement, int index, std::int64_t number)
{
    return statement && statement->BindNumber(index, number);
}

bool BindNull(const StatementPtr& statement, int index)
{
    return statement && statement->BindNothing(index);
}
}  // namespace internal

int ExecuteStmt(const ConnectionPtr& connection, const StatementPtr& statement, RowCallback callback, void* context,
                int waitLimitMs)
{
    if (!connection || !statement) {
        return FAILURE;
    }
    statement->Connection().SetWaitLimit(waitLimitMs);
    return statement->Run(callback, context);
}

int Execute(const ConnectionPtr& connection, const char* sql, int waitLimitMs)
{
    return ExecuteStmt(connection, internal::Prepare(connection, sql, waitLimitMs), nullptr, nullptr, waitLimitMs);
}
}  // namespace DBStore
