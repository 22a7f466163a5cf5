#include "Commands.h"
#include "InspectStatements.h"
#include "StoreReader.h"

namespace ConfigStoreCtl
{
void DefaultList(const Arguments&, Output& output)
{
    Listing listing = TableOfRows({{"VALUES", "values"}});
    for (const StoreRow& row : ReadRowsBelow(Statements::LIST_DEFAULTS, "")) {
        listing.rows.push_back(RowFields(row, {ValuesPresent(row, 5, {"user", "vital", "cached"})}));
    }
    output.Table(listing);
}

void DefaultShow(const Arguments& arguments, Output& output)
{
    Listing listing =
        RecordsOfRows({{"user value", "value"}, {"vital value", "vitalValue"}, {"cached value", "cachedValue"}});
    for (const StoreRow& row :
         ReadObject(Statements::SHOW_DEFAULTS, arguments.values[0], "no default configuration in the config store")) {
        listing.rows.push_back(RowFields(row, {JsonOf(row[5]), JsonOf(row[6]), JsonOf(row[7])}));
    }
    output.Records(listing);
}
}  // namespace ConfigStoreCtl
