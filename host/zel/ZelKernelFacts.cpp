#include "ZelKernelFacts.h"

#include "CSLogger.h"
#include "ConfigStoreDocument.h"
#include "HostUtil.h"

namespace
{
bool Parse(NimbConfigStore::JsonDocument& facts, std::string& reason)
{
    if (!ConfigStoreDocument::ParseFile(KERNEL_FACTS_FILE, facts, &reason)) {
        return false;
    }
    reason = "not an object";
    return facts.IsObject();
}
}  // namespace

ORV_ReturnStatus LoadKernelFacts(NimbConfigStore::JsonDocument& facts)
{
    std::string reason;
    if (Parse(facts, reason)) {
        return ORV_OK;
    }
    CSLogger::Log(CSLogger::ERROR, "Cannot read the kernel's facts from %s: %s", KERNEL_FACTS_FILE, reason.c_str());
    return ORV_FAILURE;
}

int KernelInterfaceVersion()
{
    NimbConfigStore::JsonDocument facts;
    std::string ignored;  // the first node that is read reports a file that cannot be
    if (IsRealHost() || !Parse(facts, ignored)) {
        return ZEL_INTERFACE_VERSION;
    }
    const auto version = facts.FindMember("interfaceVersion");
    return version != facts.MemberEnd() && version->value.IsInt() ? version->value.GetInt() : ZEL_INTERFACE_VERSION;
}
