#include <algorithm>
#include <charconv>
#include <map>
#include <stdexcept>
#include <utility>

#include "Commands.h"
#include "NimbConfigStore.h"
#include "StoreReader.h"

namespace ConfigStoreCtl
{
namespace
{
constexpr std::size_t LARGEST = 10;
constexpr std::int64_t BAR_WIDTH = 24;

/// Characters of the values of a row, or of several rows together.
struct Sizes
{
    std::int64_t rows = 0;
    std::int64_t vital = 0;
    std::int64_t user = 0;
    std::int64_t cached = 0;

    std::int64_t Total() const { return vital + user + cached; }
    Sizes& operator+=(const Sizes& other)
    {
        rows += other.rows;
        vital += other.vital;
        user += other.user;
        cached += other.cached;
        return *this;
    }
};

using SizesByName = std::map<std::string, Sizes>;

/// What stands behind the last comma, which is cut off: names may hold commas of their own, numbers never do.
std::int64_t CutNumber(std::string& row)
{
    const std::size_t comma = row.rfind(',');
    std::int64_t number = 0;
    std::from_chars(row.data() + comma + 1, row.data() + row.size(), number);
    row.resize(comma);
    return number;
}

struct RowSizes
{
    std::string component;
    std::string object;  // COMPONENT/GROUP/KEY
    Sizes sizes;
};

RowSizes ParseRow(std::string row)
{
    Sizes sizes{1};
    sizes.cached = CutNumber(row);
    sizes.user = CutNumber(row);
    sizes.vital = CutNumber(row);
    const std::size_t group = row.find(',');
    row[group] = '/';
    row[row.find(',', group)] = '/';
    return {row.substr(0, group), row, sizes};
}

std::vector<RowSizes> ReadRowSizes()
{
    std::vector<RowSizes> rows;
    for (const std::string& row : NimbConfigStore::GetConfigMetrics()) {
        rows.push_back(ParseRow(row));
    }
    return rows;
}

/// By falling size; those of one size by name.
std::vector<std::pair<std::string, Sizes>> Ordered(const SizesByName& sizes)
{
    std::vector<std::pair<std::string, Sizes>> ordered(sizes.begin(), sizes.end());
    std::stable_sort(ordered.begin(), ordered.end(),
                     [](const auto& a, const auto& b) { return a.second.Total() > b.second.Total(); });
    return ordered;
}

Listing LargestObjects(const SizesByName& objects)
{
    Listing listing{{{"OBJECT", "object"},
                     {"ROWS", "rows"},
                     {"VITAL", "vitalSize"},
                     {"USER", "userSize"},
                     {"CACHED", "cachedSize"},
                     {"TOTAL", "size"}},
                    {}};
    for (const auto& [object, sizes] : Ordered(objects)) {
        if (listing.rows.size() < LARGEST) {
            listing.rows.push_back({object, sizes.rows, sizes.vital, sizes.user, sizes.cached, sizes.Total()});
        }
    }
    return listing;
}

/// @p part of @p whole, on a scale to @p scale; nothing of nothing.
std::int64_t Share(std::int64_t part, std::int64_t whole, std::int64_t scale)
{
    return whole == 0 ? 0 : (part * scale + whole / 2) / whole;
}

Listing Components(const SizesByName& components, std::int64_t total)
{
    Listing listing{
        {{"COMPONENT", "component"}, {"ROWS", "rows"}, {"TOTAL", "size"}, {"%", "percent"}, {"SHARE", nullptr}}, {}};
    for (const auto& [component, sizes] : Ordered(components)) {
        const auto bar = static_cast<std::size_t>(Share(sizes.Total(), total, BAR_WIDTH));
        listing.rows.push_back(
            {component, sizes.rows, sizes.Total(), Share(sizes.Total(), total, 100), std::string(bar, '#')});
    }
    return listing;
}

int Measure(const char* what, int (*metric)())
{
    try {
        return metric();
    } catch (const std::out_of_range&) {
        throw CommandFailure(what, "more than 2147483647 characters");
    }
}

void ShowRows(Output& output)
{
    Listing listing{{{"OBJECT", "object"}, {"VITAL", "vitalSize"}, {"USER", "userSize"}, {"CACHED", "cachedSize"}}, {}};
    for (const RowSizes& row : ReadRowSizes()) {
        listing.rows.push_back({row.object, row.sizes.vital, row.sizes.user, row.sizes.cached});
    }
    output.Table(listing);
}
}  // namespace

void Metrics(const Arguments& arguments, Output& output)
{
    RequireStore(DBStore::Type::ConfigStore);
    if (arguments.Has("--rows")) {
        ShowRows(output);
        return;
    }
    SizesByName objects;
    SizesByName components;
    Sizes all;
    for (const RowSizes& row : ReadRowSizes()) {
        objects[row.object] += row.sizes;
        components[row.component] += row.sizes;
        all += row.sizes;
    }
    output.Record({{{"rows", "rows"},
                    {"vital values", "vitalSize"},
                    {"user values", "userSize"},
                    {"cached values", "cachedSize"},
                    {"components", "components"},
                    {"largest objects", "largestObjects"}},
                   {{std::int64_t{NimbConfigStore::GetConfigRowCount()},
                     std::int64_t{Measure("vital values", NimbConfigStore::GetVitalConfigSize)},
                     std::int64_t{Measure("user values", NimbConfigStore::GetUserConfigSize)},
                     std::int64_t{Measure("cached values", NimbConfigStore::GetCachedConfigSize)},
                     Nested(Components(components, all.Total())), Nested(LargestObjects(objects))}}});
}
}  // namespace ConfigStoreCtl
