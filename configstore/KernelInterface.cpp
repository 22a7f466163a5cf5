#include "KernelInterface.h"

#include <atomic>

#include "ConfigStoreException.h"

namespace NimbConfigStore
{
void EnsureKernelInterface()
{
    // Two threads that meet here both check, which harms nothing.
    static std::atomic<bool> checked = false;
    if (checked) {
        return;
    }
    if (ZEL_CheckSig(ZEL_DefsMD5Sum, ZEL_INTERFACE_VERSION) != ORV_OK) {
        throw ConfigStoreException(CS_ERROR_OPERATION, "Failed to invoke ZEL_CheckSig");
    }
    checked = true;
}

std::string ReadKernelText(ZEL_NodeID node, std::size_t size, const char* failure)
{
    std::string buffer(size, '\0');
    if (ZEL_Get(node, nullptr, buffer.data(), buffer.size()) != ORV_OK) {
        throw ConfigStoreException(CS_ERROR_OPERATION, failure);
    }
    return buffer.c_str();
}
}  // namespace NimbConfigStore
