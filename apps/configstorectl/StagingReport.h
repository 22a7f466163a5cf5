#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "DesiredInstances.h"
#include "Output.h"
#include "StoreReader.h"

namespace ConfigStoreCtl
{
/// The columns of a row of the staging table.
enum StagedColumn : std::size_t
{
    STAGED_IDENTIFIER = 3,
    STAGED_VERSION,
    STAGED_ACTION,
    STAGED_VALUE,
    STAGED_VITAL,
    STAGED_CACHED,
};

/// Every staged row.
std::vector<StoreRow> ReadStaged();

/// What one staging call did: what it staged and why, what of an earlier staging is no more, and what the next boot
/// applies. Made before the call.
class StagingReport
{
public:
    StagingReport();

    /// For a document, which replaced the earlier staging. @param instances  what it held.
    void PrintDocument(const std::vector<DesiredInstance>& instances, Output& output);

    /// For the delete of a whole object, which added to it. @param object  COMPONENT/GROUP/KEY
    void PrintDelete(const std::string& object, Output& output);

private:
    void Add(const char* what, const StoreRow& row, const std::string& why, const MemberChanges& filledIn = {});
    void AddCarriedOver(const StoreRow& row);
    void AddEarlier(const std::vector<StoreRow>& now);
    void Print(Output& output);

    std::vector<StoreRow> earlier_;
    std::optional<int> earlierMode_;
    Listing listing_;
    std::map<std::string, std::int64_t> counts_;  // of rows, by what
};
}  // namespace ConfigStoreCtl
