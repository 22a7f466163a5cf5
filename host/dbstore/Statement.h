#pragma once

#include "Connection.h"

namespace DBStore::internal
{
/// A prepared statement in use. It keeps its connection open, and goes back to it when the last user lets go.
class Statement
{
public:
    Statement(ConnectionPtr connection, StatementHandle handle);
    ~Statement();
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;

    StoreConnection& Connection() const { return *connection_; }

    bool BindText(int index, std::string_view text);
    bool BindNumber(int index, std::int64_t number);
    bool BindNothing(int index);

    /// Runs to the end, then resets and clears the bindings, also when the callback throws.
    int Run(RowCallback callback, void* context);

private:
    bool Bound(int result);
    int Step(RowCallback callback, void* context);
    bool HandOver(RowCallback callback, void* context);

    ConnectionPtr connection_;
    StatementHandle handle_;
    bool bindFailed_ = false;
};
}  // namespace DBStore::internal
