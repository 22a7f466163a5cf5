#include "Commands.h"
#include "DesiredFindings.h"
#include "DocumentFile.h"
#include "HostUtil.h"
#include "NimbConfigStore.h"
#include "NimbSchemaStore.h"
#include "StagingReport.h"

namespace ConfigStoreCtl
{
void DesiredValidate(const Arguments& arguments, Output& output)
{
    const std::string& file = arguments.values[0];
    NimbConfigStore::JsonDocument desired;
    ParseDocument(file, desired);
    RequireStore(DBStore::Type::SchemaStore);
    // The library's own verdict, whose findings it only logs.
    const bool valid =
        NimbConfigStore::ValidateDesiredDocument(desired, NimbSchemaStore::SchemaStore::GetStore(false)->GetCache());
    Listing findings = valid ? Listing{} : SchemaFindings(file, desired);
    if (valid && File_Exists(DBStore::StorePath(DBStore::Type::ConfigStore))) {
        findings = StagingFindings(file, desired);
    }
    if (findings.rows.empty()) {
        output.Table(findings, file + ": valid");
    } else {
        RefuseDocument(file, findings, "", output);
    }
}

void DesiredShow(const Arguments&, Output& output)
{
    Listing listing = RecordsOfRows(
        {{"action", "bootAction"}, {"value", "value"}, {"vital value", "vitalValue"}, {"cached value", "cachedValue"}});
    for (const StoreRow& row : ReadStaged()) {
        listing.rows.push_back(RowFields(row, {TextOf(row[STAGED_ACTION]), JsonOf(row[STAGED_VALUE]),
                                               JsonOf(row[STAGED_VITAL]), JsonOf(row[STAGED_CACHED])}));
    }
    output.Records(listing, "nothing is staged");
}
}  // namespace ConfigStoreCtl
