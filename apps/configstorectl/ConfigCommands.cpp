#include "Commands.h"
#include "InspectStatements.h"
#include "StoreReader.h"

namespace ConfigStoreCtl
{
void ConfigList(const Arguments& arguments, Output& output)
{
    Listing listing = TableOfRows({{"REVISION", "revision"}, {"VALUES", "values"}});
    const std::string path = arguments.values.empty() ? "" : arguments.values[0];
    for (const StoreRow& row : ReadRowsBelow(Statements::LIST_CONFIG, path)) {
        const auto values = ValuesPresent(row, 6, {"user", "vital", "cached", "autoconf", "desired"});
        listing.rows.push_back(RowFields(row, {NumberOf(row[5]), values}));
    }
    output.Table(listing);
}

void ConfigShow(const Arguments& arguments, Output& output)
{
    Listing listing = RecordsOfRows({{"revision", "revision"},
                                     {"created", "creationTime"},
                                     {"success", "success"},
                                     {"user value", "userValue"},
                                     {"vital value", "vitalValue"},
                                     {"cached value", "cachedValue"},
                                     {"autoconf value", "autoConfValue"},
                                     {"desired value", "desiredValue"}});
    for (const StoreRow& row :
         ReadObject(Statements::SHOW_CONFIG, arguments.values[0], "no such row in the config store")) {
        listing.rows.push_back(RowFields(row, {NumberOf(row[5]), TextOf(row[6]), NumberOf(row[7]), JsonOf(row[8]),
                                               JsonOf(row[9]), JsonOf(row[10]), JsonOf(row[11]), JsonOf(row[12])}));
    }
    output.Records(listing);
}
}  // namespace ConfigStoreCtl
