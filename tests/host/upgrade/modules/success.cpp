#include <fstream>
#include <string>

#include "NimbConfigUpgrade.h"

// Leaves a line with what it was told in a file of its host.
extern "C" __attribute__((visibility("default"))) int ConfigUpgrade_Run(const ConfigUpgradeContext* context)
{
    std::ofstream told(context->hostRoot + std::string("/var/told"), std::ios::app);
    told << context->version << ' ' << context->debug << ' ' << context->liveInstall << ' ' << context->storePath
         << '\n';
    return told.good() ? 0 : 1;
}
