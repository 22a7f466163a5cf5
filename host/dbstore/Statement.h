#pragma once

#include <vector>

#include "Connection.h"

namespace DBStore::internal
{
/// A prepared statement in use. It keeps its connection open, and goes back to it when the last user lets go.
class Statement
{
public:
    Statement(ConnectionPtr connection, PreparedStatement prepared);
    ~Statement();
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;

    StoreConnection& Connection() const { return *connection_; }

    bool BindText(int index, std::string_view text);
    bool BindNumber(int index, std::int64_t number);
    bool BindNothing(int index);

    /// Runs to the end, then resets and clears the bindings, also when the callback throws.
    int Run(RowCallback callback, void* context);

    /// Runs a statement of one column and takes the text of its first row whole, NULs included; without a row it
    /// leaves @p text alone.
    int RunForText(std::string& text);

private:
    bool Bound(int result);
    bool MayRun() const { return !bindFailed_ && !connection_->HasLostTransaction(); }
    int Step(RowCallback callback, void* context);
    bool HandOver(RowCallback callback, void* context);

    ConnectionPtr connection_;
    PreparedStatement prepared_;
    sqlite3_stmt* const handle_;
    bool bindFailed_ = false;
    std::vector<char*> values_;  ///< of the row handed over
    std::vector<char*> names_;
};
}  // namespace DBStore::internal
