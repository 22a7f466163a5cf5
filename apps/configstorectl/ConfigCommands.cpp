#include "Commands.h"
#include "InspectStatements.h"
#include "StoreReader.h"

namespace ConfigStoreCtl
{
void ConfigList(const Arguments& arguments, Output& output)
{
    Listing listing{{{"OBJECT", nullptr},
                     {nullptr, "component"},
                     {nullptr, "group"},
                     {nullptr, "key"},
                     {"IDENTIFIER", "identifier"},
                     {"VERSION", "version"},
                     {"REVISION", "revision"},
                     {"VALUES", "values"}},
                    {}};
    const std::string path = arguments.values.empty() ? "" : arguments.values[0];
    for (const StoreRow& row : ReadRowsBelow(Statements::LIST_CONFIG, path)) {
        listing.rows.push_back({ObjectOf(row), TextOf(row[0]), TextOf(row[1]), TextOf(row[2]), TextOf(row[3]),
                                TextOf(row[4]), NumberOf(row[5]),
                                ValuesPresent(row, 6, {"user", "vital", "cached", "autoconf", "desired"})});
    }
    output.Table(listing);
}

void ConfigShow(const Arguments& arguments, Output& output)
{
    Listing listing{{{"object", nullptr},
                     {nullptr, "component"},
                     {nullptr, "group"},
                     {nullptr, "key"},
                     {"identifier", "identifier"},
                     {"version", "version"},
                     {"revision", "revision"},
                     {"created", "creationTime"},
                     {"success", "success"},
                     {"user value", "userValue"},
                     {"vital value", "vitalValue"},
                     {"cached value", "cachedValue"},
                     {"autoconf value", "autoConfValue"},
                     {"desired value", "desiredValue"}},
                    {}};
    for (const StoreRow& row : ReadRowsBelow(Statements::SHOW_CONFIG, arguments.values[0])) {
        listing.rows.push_back({ObjectOf(row), TextOf(row[0]), TextOf(row[1]), TextOf(row[2]), TextOf(row[3]),
                                TextOf(row[4]), NumberOf(row[5]), TextOf(row[6]), NumberOf(row[7]), JsonOf(row[8]),
                                JsonOf(row[9]), JsonOf(row[10]), JsonOf(row[11]), JsonOf(row[12])});
    }
    if (listing.rows.empty()) {
        throw CommandFailure(arguments.values[0], "no such row in the config store");
    }
    output.Records(listing);
}
}  // namespace ConfigStoreCtl
