#pragma once

#include <functional>
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

/// Hands each row of a statement of the catalogue to @p visit. @throws CommandFailure when the store cannot be opened
/// or read.
void VisitRows(DBStore::Type type, const std::string& sql, const std::vector<std::string>& parameters,
               const std::function<void(StoreRow row)>& visit);

/// The rows of a statement of the catalogue. @throws CommandFailure when the store cannot be opened or read.
std::vector<StoreRow> ReadRows(DBStore::Type type, const std::string& sql,
                               const std::vector<std::string>& parameters = {});

/// The rows below @p path (COMPONENT[/GROUP[/KEY[/IDENTIFIER]]], or empty for all) in the order of their identity.
std::vector<StoreRow> ReadRowsBelow(const std::string& statement, const std::string& path);

/// The rows of an object or instance that must be there. @throws CommandFailure saying @p why when there is none.
std::vector<StoreRow> ReadObject(const std::string& statement, const std::string& path, const char* why);

/// An entry of the config store; empty when it is absent.
std::string ReadEntry(const char* key);

Field TextOf(const std::optional<std::string>& column);
Field NumberOf(const std::optional<std::string>& column);
Field JsonOf(const std::optional<std::string>& column);

/// "COMPONENT/GROUP/KEY" of a row that begins with these three.
std::string ObjectOf(const StoreRow& row);

/// Component, group, key and identifier of a row that begins with these four.
StoreRow KeyOf(const StoreRow& row);

/// The columns that every listing of such rows begins with, under headings for a table or a record, and then those of
/// its own: object, component, group, key, identifier, version.
Listing TableOfRows(const std::vector<Column>& own);
Listing RecordsOfRows(const std::vector<Column>& own);

/// The fields of those columns, of a row that begins with component, group, key, identifier and version.
std::vector<Field> RowFields(const StoreRow& row, const std::vector<Field>& own);

/// The names of those columns, from @p first on, that hold 1.
std::vector<std::string> ValuesPresent(const StoreRow& row, std::size_t first, const std::vector<std::string>& names);
}  // namespace ConfigStoreCtl
