#include "NimbConfigUpgrade.h"

extern "C" __attribute__((visibility("default"))) int ConfigUpgrade_Run(const ConfigUpgradeContext*)
{
    return 3;
}
