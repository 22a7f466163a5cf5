#pragma once

#include <map>
#include <optional>
#include <vector>

#include "JsonChanges.h"
#include "StoreReader.h"

namespace ConfigStoreCtl
{
/// The columns of a row of the config store, as Statements::SHOW_CONFIG lists them.
enum ConfigColumn : std::size_t
{
    CONFIG_IDENTIFIER = 3,
    CONFIG_VERSION,
    CONFIG_REVISION,
    CONFIG_CREATION_TIME,
    CONFIG_SUCCESS,
    CONFIG_USER,
    CONFIG_VITAL,
    CONFIG_CACHED,
    CONFIG_AUTOCONF,
    CONFIG_DESIRED,
};

/// What became of one row. Without a row before it was added, without one after it was removed.
struct RowChange
{
    std::optional<StoreRow> before;
    std::optional<StoreRow> after;
    MemberChanges members;  ///< below /version, /revision, /success, /userValue, …

    const StoreRow& Row() const { return after ? *after : *before; }
};

/// The rows of the config store as they were when this was made.
class ConfigSnapshot
{
public:
    ConfigSnapshot();

    /// What is different now, in the order of the rows' identity. Takes the snapshot apart: it can be asked once. The
    /// time of creation is left out, and so is a value that is the same, written otherwise.
    std::vector<RowChange> Changes();

private:
    using Rows = std::map<StoreRow, std::vector<StoreRow>>;  // by key; rows without identifier may share one

    void TakeUnchanged(Rows& now);

    Rows rows_;
};
}  // namespace ConfigStoreCtl
