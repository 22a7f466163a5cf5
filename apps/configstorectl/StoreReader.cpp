#include "StoreReader.h"

#include <fcntl.h>
#include <unistd.h>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "HostEvents.h"
#include "HostUtil.h"
#include "InspectStatements.h"
#include "ObjectPath.h"

namespace ConfigStoreCtl
{
namespace
{
std::string WhyNotOpened(const char* path, CallWatch& watch)
{
    const int file = HostOpen(path, O_RDONLY);
    if (file == -1) {
        return std::string("cannot be opened: ") + std::strerror(errno);
    }
    close(file);
    // Only the log has the database's own reason.
    const std::string errors = watch.Errors();
    const std::string mark = std::string(path) + ": ";
    const std::size_t found = errors.find(mark);
    return found == std::string::npos ? "cannot be opened as a store"
                                      : "cannot be opened: " + errors.substr(found + mark.size());
}

std::string WhyNotRead(const char* path)
{
    return DBStore::Check(path) ? "cannot be read; the log says why" : "is damaged";
}

template <class Item>
std::vector<Item> WithOwn(std::vector<Item> common, const std::vector<Item>& own)
{
    common.insert(common.end(), own.begin(), own.end());
    return common;
}

using Visit = std::function<void(StoreRow row)>;

int VisitRow(void* visit, int columns, char** values, char**)
{
    StoreRow row;
    for (int i = 0; i < columns; ++i) {
        row.push_back(values[i] != nullptr ? std::optional<std::string>(values[i]) : std::nullopt);
    }
    (*static_cast<const Visit*>(visit))(std::move(row));
    return 0;
}
}  // namespace

DBStore::ConnectionPtr OpenForReading(DBStore::Type type)
{
    CallWatch watch;
    DBStore::ConnectionPtr connection = DBStore::GetConnection(type, false);
    if (connection == nullptr) {
        throw CommandFailure(DBStore::StorePath(type), WhyNotOpened(DBStore::StorePath(type), watch));
    }
    return connection;
}

void RequireStore(DBStore::Type type)
{
    (void)OpenForReading(type);
}

void VisitRows(DBStore::Type type, const std::string& sql, const std::vector<std::string>& parameters,
               const Visit& visit)
{
    const DBStore::ConnectionPtr connection = OpenForReading(type);
    const DBStore::StatementPtr statement = DBStore::internal::Prepare(connection, sql, DBStore::WAIT_LIMIT_MS);
    int index = 0;
    for (const std::string& parameter : parameters) {
        // A failed bind makes the run fail.
        (void)DBStore::internal::Bind(statement, ++index, std::string_view(parameter));
    }
    void* context = const_cast<Visit*>(&visit);
    if (DBStore::ExecuteStmt(connection, statement, VisitRow, context, DBStore::WAIT_LIMIT_MS) != DBStore::SUCCESS) {
        throw CommandFailure(DBStore::StorePath(type), WhyNotRead(DBStore::StorePath(type)));
    }
}

std::vector<StoreRow> ReadRows(DBStore::Type type, const std::string& sql, const std::vector<std::string>& parameters)
{
    std::vector<StoreRow> rows;
    VisitRows(type, sql, parameters, [&rows](StoreRow row) { rows.push_back(std::move(row)); });
    return rows;
}

std::vector<StoreRow> ReadRowsBelow(const std::string& statement, const std::string& path)
{
    const char* const filters[] = {Statements::FILTER_COMPONENT, Statements::FILTER_GROUP, Statements::FILTER_KEY,
                                   Statements::FILTER_IDENTIFIER};
    std::string sql = statement;
    const std::vector<std::string> parts = path.empty() ? std::vector<std::string>{} : SplitObjectPath(path);
    for (std::size_t i = 0; i < parts.size(); ++i) {
        sql += filters[i];
    }
    return ReadRows(DBStore::Type::ConfigStore, sql + Statements::ORDER_BY_OBJECT, parts);
}

std::vector<StoreRow> ReadObject(const std::string& statement, const std::string& path, const char* why)
{
    std::vector<StoreRow> rows = ReadRowsBelow(statement, path);
    if (rows.empty()) {
        throw CommandFailure(path, why);
    }
    return rows;
}

std::string ReadEntry(const char* key)
{
    std::string value;
    const char* path = DBStore::StorePath(DBStore::Type::ConfigStore);
    if (DBStore::ReadKeyValue(key, &value, OpenForReading(DBStore::Type::ConfigStore)) != DBStore::SUCCESS) {
        throw CommandFailure(path, WhyNotRead(path));
    }
    return value;
}

Field TextOf(const std::optional<std::string>& column)
{
    return column ? Field(*column) : Field();
}

Field NumberOf(const std::optional<std::string>& column)
{
    return column ? Field(std::int64_t{std::strtoll(column->c_str(), nullptr, 10)}) : Field();
}

Field JsonOf(const std::optional<std::string>& column)
{
    return column ? Field(JsonText{*column}) : Field();
}

std::string ObjectOf(const StoreRow& row)
{
    return row[0].value_or("") + "/" + row[1].value_or("") + "/" + row[2].value_or("");
}

StoreRow KeyOf(const StoreRow& row)
{
    constexpr int COLUMNS = 4;
    return {row.begin(), row.begin() + COLUMNS};
}

Listing TableOfRows(const std::vector<Column>& own)
{
    return {WithOwn({{"OBJECT", nullptr},
                     {nullptr, "component"},
                     {nullptr, "group"},
                     {nullptr, "key"},
                     {"IDENTIFIER", "identifier"},
                     {"VERSION", "version"}},
                    own),
            {}};
}

Listing RecordsOfRows(const std::vector<Column>& own)
{
    return {WithOwn({{"object", nullptr},
                     {nullptr, "component"},
                     {nullptr, "group"},
                     {nullptr, "key"},
                     {"identifier", "identifier"},
                     {"version", "version"}},
                    own),
            {}};
}

std::vector<Field> RowFields(const StoreRow& row, const std::vector<Field>& own)
{
    return WithOwn<Field>(
        {ObjectOf(row), TextOf(row[0]), TextOf(row[1]), TextOf(row[2]), TextOf(row[3]), TextOf(row[4])}, own);
}

std::vector<std::string> ValuesPresent(const StoreRow& row, std::size_t first, const std::vector<std::string>& names)
{
    std::vector<std::string> present;
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (row[first + i] == "1") {
            present.push_back(names[i]);
        }
    }
    return present;
}
}  // namespace ConfigStoreCtl
