#include "Commands.h"
#include "InspectStatements.h"
#include "StoreReader.h"

namespace ConfigStoreCtl
{
void DefaultList(const Arguments&, Output& output)
{
    Listing listing{{{"OBJECT", nullptr},
                     {nullptr, "component"},
                     {nullptr, "group"},
                     {nullptr, "key"},
                     {"IDENTIFIER", "identifier"},
                     {"VERSION", "version"},
                     {"VALUES", "values"}},
                    {}};
    for (const StoreRow& row : ReadRowsBelow(Statements::LIST_DEFAULTS, "")) {
        listing.rows.push_back({ObjectOf(row), TextOf(row[0]), TextOf(row[1]), TextOf(row[2]), TextOf(row[3]),
                                TextOf(row[4]), ValuesPresent(row, 5, {"user", "vital", "cached"})});
    }
    output.Table(listing);
}

void DefaultShow(const Arguments& arguments, Output& output)
{
    Listing listing{{{"object", nullptr},
                     {nullptr, "component"},
                     {nullptr, "group"},
                     {nullptr, "key"},
                     {"identifier", "identifier"},
                     {"version", "version"},
                     {"user value", "value"},
                     {"vital value", "vitalValue"},
                     {"cached value", "cachedValue"}},
                    {}};
    for (const StoreRow& row : ReadRowsBelow(Statements::SHOW_DEFAULTS, arguments.values[0])) {
        listing.rows.push_back({ObjectOf(row), TextOf(row[0]), TextOf(row[1]), TextOf(row[2]), TextOf(row[3]),
                                TextOf(row[4]), JsonOf(row[5]), JsonOf(row[6]), JsonOf(row[7])});
    }
    if (listing.rows.empty()) {
        throw CommandFailure(arguments.values[0], "no default configuration in the config store");
    }
    output.Records(listing);
}
}  // namespace ConfigStoreCtl
