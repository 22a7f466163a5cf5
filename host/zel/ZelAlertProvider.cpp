#include "ZelParamList.h"
#include "ZelProviders.h"
#include "ZelTypes.h"
#include "ZubEvents.h"

namespace
{
ORV_ReturnStatus SetSystemAlert(const ZEL_ParamList&, const ZEL_ParamList& input)
{
    return NimbConfigStore::RaiseSystemAlert(input.Text(0)) ? ORV_OK : ORV_FAILURE;
}

constexpr ZelNode NODES[] = {
    {.path = "/system/sysAlert",
     .help = "raise a system alert",
     .id = ZEL_NODE_system_sysAlert,
     .input = &ZEL_TEXT,
     .set = SetSystemAlert,
     .inEveryRoot = true},
};
}  // namespace

constinit const ZelProvider ZEL_ALERT_PROVIDER = NODES;
