#include "Commands.h"
#include "HostEvents.h"
#include "NimbConfigStore.h"
#include "StoreReader.h"

namespace ConfigStoreCtl
{
void LiveInstall(const Arguments& arguments, Output& output)
{
    RequireStore(DBStore::Type::ConfigStore);
    CallWatch watch;
    if (NimbConfigStore::SetLiveInstallBoot(arguments.values[0].c_str()) != 0) {
        watch.ThrowErrors("the mark could not be written");
    }
    output.Record({{{"live install", "liveInstall"}}, {{arguments.values[0] == "true"}}});
}

void InstallInfo(const Arguments& arguments, Output& output)
{
    RequireStore(DBStore::Type::ConfigStore);
    if (!arguments.values.empty()) {
        CallWatch watch;
        NimbConfigStore::SetInstallInfo(arguments.values[0]);
        watch.ThrowErrors();
    }
    output.Record({{{"install info", "installInfo"}}, {{NimbConfigStore::GetInstallInfo()}}});
}
}  // namespace ConfigStoreCtl
