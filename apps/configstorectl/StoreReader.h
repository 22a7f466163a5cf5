#pragma once

#include <optional>
#include <string>
#include <vector>

#include "DBStore.h"
#include "Output.h"

namespace ConfigStoreCtl
{
/// One row of a store; a NULL is no value.
using StoreRow = std::vector<std::optional<std::string>>;

/// A connection that cannot change the store. @throws CommandFailure naming the store's file and the reason.
DBStore::ConnectionPtr OpenForReading(DBStore::Type type);

/// Fails as OpenForReading does: for commands whose library call would not say that the store is missing.
void RequireStore(DBStore::Type type);

/// The rows of a statement of the catalogue. @throws CommandFailure when the store cannot be opened or read.
std::vector<StoreRow> ReadRows(DBStore::Type type, const std::string& sql,
                               const std::vector<std::string>& parameters = {});

/// The rows below @p path (COMPONENT[/GROUP[/KEY[/IDENTIFIER]]], or empty for all) in the order of their identity.
std::vector<StoreRow> ReadRowsBelow(const std::string& statement, const std::string& path);

/// An entry of the config store; empty when it is absent.
std::string ReadEntry(const char* key);

Field TextOf(const std::optional<std::string>& column);
Field NumberOf(const std::optional<std::string>& column);
Field JsonOf(const std::optional<std::string>& column);

/// "COMPONENT/GROUP/KEY" of a row that begins with these three.
std::string ObjectOf(const StoreRow& row);

/// The names of those columns, from @p first on, that hold 1.
std::vector<std::string> ValuesPresent(const StoreRow& row, std::size_t first, const std::vector<std::string>& names);
}  // namespace ConfigStoreCtl
