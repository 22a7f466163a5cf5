#include "Commands.h"
#include "HostEvents.h"
#include "NimbConfigStore.h"
#include "StoreReader.h"

namespace ConfigStoreCtl
{
namespace
{
/// Opens or closes the period by @p change, which does not say whether it could.
void Change(void (*change)(), Output& output)
{
    RequireStore(DBStore::Type::ConfigStore);
    CallWatch watch;
    change();
    watch.ThrowErrors();
    AutoConfStatus({}, output);
}
}  // namespace

void AutoConfStart(const Arguments&, Output& output)
{
    Change(NimbConfigStore::StartAutoConf, output);
}

void AutoConfEnd(const Arguments&, Output& output)
{
    Change(NimbConfigStore::EndAutoConf, output);
}

void AutoConfStatus(const Arguments&, Output& output)
{
    RequireStore(DBStore::Type::ConfigStore);
    output.Record({{{"automatic configuration", "isAutoConf"}}, {{NimbConfigStore::IsAutoConf()}}});
}
}  // namespace ConfigStoreCtl
