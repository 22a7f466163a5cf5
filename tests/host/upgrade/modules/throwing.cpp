#include <stdexcept>

#include "NimbConfigUpgrade.h"

namespace
{
// Known to this module alone, so that its destruction needs the module's code.
struct ModuleError : std::runtime_error
{
    using std::runtime_error::runtime_error;
};
}  // namespace

extern "C" __attribute__((visibility("default"))) int ConfigUpgrade_Run(const ConfigUpgradeContext*)
{
    throw ModuleError("cannot convert");
}
