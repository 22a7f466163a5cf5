#pragma once

#include <utility>

#include "CSLogger.h"
#include "DBStore.h"

namespace NimbConfigStore
{
/// A transaction on a store, cancelled unless it was committed.
class StoreTransaction
{
public:
    explicit StoreTransaction(DBStore::ConnectionPtr connection)
        : connection_(std::move(connection)), open_(DBStore::BeginTransaction(connection_) == DBStore::SUCCESS)
    {}
    ~StoreTransaction()
    {
        if (open_) {
            (void)DBStore::CancelTransaction(connection_);  // logged by the database library; nothing else can be done
        }
    }
    StoreTransaction(const StoreTransaction&) = delete;
    StoreTransaction& operator=(const StoreTransaction&) = delete;

    /// False when it could not be begun, or is over.
    bool IsOpen() const { return open_; }

    /// False when the commit failed; the transaction is then cancelled on destruction.
    [[nodiscard]] bool Commit()
    {
        open_ = DBStore::CommitTransaction(connection_) != DBStore::SUCCESS;
        return !open_;
    }

private:
    DBStore::ConnectionPtr connection_;
    bool open_;
};

/// The schema store, attached to a connection as "ss" until the end of the scope.
class AttachedSchemaStore
{
public:
    explicit AttachedSchemaStore(DBStore::ConnectionPtr connection)
        : connection_(std::move(connection)), attached_(DBStore::AttachSchemaStore(connection_) == DBStore::SUCCESS)
    {}
    ~AttachedSchemaStore() { (void)Detach(); }  // a failure has been logged and changes no outcome
    AttachedSchemaStore(const AttachedSchemaStore&) = delete;
    AttachedSchemaStore& operator=(const AttachedSchemaStore&) = delete;

    bool IsAttached() const { return attached_; }

    /// Detaches now. False, after a log line, when that failed.
    bool Detach()
    {
        if (!std::exchange(attached_, false) || DBStore::DetachSchemaStore(connection_) == DBStore::SUCCESS) {
            return true;
        }
        CSLogger::Log(CSLogger::ERROR, "Failed to detach schema store");
        return false;
    }

private:
    DBStore::ConnectionPtr connection_;
    bool attached_;
};
}  // namespace NimbConfigStore
