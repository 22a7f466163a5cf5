#include "ZelParamList.h"
#include "ZelProviders.h"
#include "ZubEvents.h"

ORV_ReturnStatus SetSystemAlert(const ZEL_ParamList&, const ZEL_ParamList& input)
{
    return NimbConfigStore::RaiseSystemAlert(input.Text(0)) ? ORV_OK : ORV_FAILURE;
}
