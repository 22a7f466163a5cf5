#include "ChangeReasons.h"

#include <algorithm>

#include "NimbConfigStore.h"
#include "StagingReport.h"

using namespace NimbConfigStore;

namespace ConfigStoreCtl
{
namespace
{
/// The objects that staging carries rows of over from the live configuration.
const std::set<std::string> PRESERVED_OBJECTS = {"nimb/network/orvnics", "nimb/network_gnx/switches",
                                                 "nimb/authorization/permissions", "nimb/advanced_options/user_vars"};

/// A staged row that holds what the live row holds, or of a switch its name alone.
bool IsPreserved(const StoreRow& staged, const StoreRow& live)
{
    const std::string reducedSwitch = "{\"name\":" + Quoted(live[CONFIG_IDENTIFIER].value_or("")) + "}";
    return PRESERVED_OBJECTS.count(ObjectOf(live)) != 0 &&
           (staged[STAGED_VALUE] == live[CONFIG_USER] || staged[STAGED_VALUE] == reducedSwitch);
}

bool HeldOnlyAutoConfig(const StoreRow& row)
{
    return !row[CONFIG_USER] && !row[CONFIG_VITAL] && !row[CONFIG_CACHED] && !row[CONFIG_DESIRED];
}

bool IsFolded(const RowChange& change)
{
    return change.before && change.after && (*change.before)[CONFIG_DESIRED] &&
           (*change.before)[CONFIG_DESIRED] == (*change.after)[CONFIG_USER];
}

/// The reason for a change of one column, or nothing where only what was applied can be the reason.
const char* OwnReason(const std::string& column, bool folded)
{
    if (column == "success") {
        return "folded";
    }
    if (column == "autoConfValue") {
        return "automatic configuration cleared";
    }
    return folded && (column == "userValue" || column == "desiredValue") ? "folded" : nullptr;
}

std::string ColumnOf(const std::string& pointer)
{
    return pointer.substr(1, pointer.find('/', 1) - 1);
}
}  // namespace

ChangeReasons::ChangeReasons(int mode, const std::vector<StoreRow>& staged) : mode_(mode)
{
    for (const StoreRow& row : staged) {
        staged_[KeyOf(row)] = row;
        if (row[STAGED_ACTION] == "SET_DEFAULT") {
            defaultRestored_.insert(ObjectOf(row));
        }
    }
}

/// The row that gives @p row its values. In a whole document one without identifier stands for every instance.
const StoreRow* ChangeReasons::StagedFor(const StoreRow& row) const
{
    StoreRow key = KeyOf(row);
    auto found = staged_.find(key);
    if (mode_ == BOOTMODE_DESIRED_CONFIG) {
        for (const std::optional<std::string>& every : {std::optional<std::string>(""), {}}) {
            key[CONFIG_IDENTIFIER] = every;
            found = found != staged_.end() ? found : staged_.find(key);
        }
    } else if (found != staged_.end() && found->second[STAGED_ACTION] != "SET") {
        return nullptr;
    }
    return found != staged_.end() ? &found->second : nullptr;
}

std::string ChangeReasons::WhyApplied(const RowChange& change) const
{
    if (mode_ == BOOTMODE_BOOT_CONFIG) {
        return "boot document";
    }
    const StoreRow* staged = change.after ? StagedFor(*change.after) : nullptr;
    if (staged == nullptr) {
        const bool restored = change.after && defaultRestored_.count(ObjectOf(*change.after)) != 0;
        return restored ? "default restored" : "marked for deletion";
    }
    if (!(*staged)[STAGED_ACTION]) {
        return "default restored";
    }
    return change.before && IsPreserved(*staged, *change.before) ? "preserved" : "staged";
}

std::vector<std::string> ChangeReasons::Of(const RowChange& change) const
{
    if (change.before && !change.after && HeldOnlyAutoConfig(*change.before)) {
        return {(*change.before)[CONFIG_AUTOCONF] ? "automatic configuration cleared" : "empty"};
    }
    if (!change.before || !change.after) {
        return {WhyApplied(change)};
    }
    std::vector<std::string> reasons;
    const bool folded = IsFolded(change);
    for (const MemberChange& member : change.members) {
        const char* own = OwnReason(ColumnOf(member.pointer), folded);
        const std::string reason = own != nullptr ? own : WhyApplied(change);
        if (std::find(reasons.begin(), reasons.end(), reason) == reasons.end()) {
            reasons.push_back(reason);
        }
    }
    return reasons;
}
}  // namespace ConfigStoreCtl
