#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "ConfigChanges.h"

namespace ConfigStoreCtl
{
/// Says why a boot changes a row, from what it applied: the mode and the rows that were staged for it.
class ChangeReasons
{
public:
    ChangeReasons(int mode, const std::vector<StoreRow>& staged);

    /// At least one of: "staged", "preserved" (staged from the live configuration), "default restored",
    /// "marked for deletion", "boot document", "folded", "automatic configuration cleared", "empty".
    std::vector<std::string> Of(const RowChange& change) const;

private:
    const StoreRow* StagedFor(const StoreRow& row) const;
    std::string WhyApplied(const RowChange& change) const;

    int mode_;
    std::map<StoreRow, StoreRow> staged_;  // by component, group, key and identifier
    std::set<std::string> defaultRestored_;
};
}  // namespace ConfigStoreCtl
