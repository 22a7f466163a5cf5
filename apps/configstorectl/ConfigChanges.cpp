#include "ConfigChanges.h"

#include <algorithm>

#include "InspectStatements.h"

namespace ConfigStoreCtl
{
namespace
{
const std::string ALL_ROWS = std::string(Statements::SHOW_CONFIG) + Statements::ORDER_BY_OBJECT;

struct ComparedColumn
{
    ConfigColumn column;
    const char* place;
};
constexpr ComparedColumn JSON_COLUMNS[] = {
    {CONFIG_REVISION, "/revision"},    {CONFIG_SUCCESS, "/success"},    {CONFIG_USER, "/userValue"},
    {CONFIG_VITAL, "/vitalValue"},     {CONFIG_CACHED, "/cachedValue"}, {CONFIG_AUTOCONF, "/autoConfValue"},
    {CONFIG_DESIRED, "/desiredValue"},
};

std::optional<std::string> Column(const std::optional<StoreRow>& row, ConfigColumn column)
{
    return row ? (*row)[column] : std::nullopt;
}

RowChange Compared(std::optional<StoreRow> before, std::optional<StoreRow> after)
{
    RowChange change{std::move(before), std::move(after), {}};
    const auto quoted = [](const std::optional<std::string>& text) { return text ? Quoted(*text) : text; };
    CompareTexts(quoted(Column(change.before, CONFIG_VERSION)), quoted(Column(change.after, CONFIG_VERSION)),
                 "/version", change.members);
    for (const ComparedColumn& compared : JSON_COLUMNS) {
        CompareTexts(Column(change.before, compared.column), Column(change.after, compared.column), compared.place,
                     change.members);
    }
    return change;
}

std::optional<StoreRow> ElementAt(const std::vector<StoreRow>& rows, std::size_t i)
{
    return i < rows.size() ? std::optional(rows[i]) : std::nullopt;
}

void ComparePairs(const std::vector<StoreRow>& before, const std::vector<StoreRow>& after,
                  std::vector<RowChange>& changes)
{
    for (std::size_t i = 0; i < before.size() || i < after.size(); ++i) {
        RowChange change = Compared(ElementAt(before, i), ElementAt(after, i));
        if (!change.before || !change.after || !change.members.empty()) {
            changes.push_back(std::move(change));
        }
    }
}
}  // namespace

ConfigSnapshot::ConfigSnapshot()
{
    VisitRows(DBStore::Type::ConfigStore, ALL_ROWS, {}, [this](StoreRow row) {
        row[CONFIG_CREATION_TIME].reset();
        rows_[KeyOf(row)].push_back(std::move(row));
    });
}

/// Leaves what differs: here what was, in @p now what is.
void ConfigSnapshot::TakeUnchanged(Rows& now)
{
    VisitRows(DBStore::Type::ConfigStore, ALL_ROWS, {}, [&](StoreRow row) {
        row[CONFIG_CREATION_TIME].reset();
        StoreRow key = KeyOf(row);
        if (const auto found = rows_.find(key); found != rows_.end()) {
            std::vector<StoreRow>& sameKey = found->second;
            if (const auto same = std::find(sameKey.begin(), sameKey.end(), row); same != sameKey.end()) {
                sameKey.erase(same);
                return;
            }
        }
        now[std::move(key)].push_back(std::move(row));
    });
}

std::vector<RowChange> ConfigSnapshot::Changes()
{
    Rows now;
    TakeUnchanged(now);
    for (const auto& [key, rows] : rows_) {
        (void)now[key];  // so that rows that are gone have their place in the order
    }
    std::vector<RowChange> changes;
    for (const auto& [key, rows] : now) {
        ComparePairs(rows_[key], rows, changes);
    }
    return changes;
}
}  // namespace ConfigStoreCtl
