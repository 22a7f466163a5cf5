#include "ZelKernelFacts.h"

#include "CSLogger.h"
#include "ConfigStoreDocument.h"
#include "HostUtil.h"
#include "ZelSnapshot.h"

namespace
{
ParsedKernelFacts Parse()
{
    const auto facts = std::make_shared<NimbConfigStore::JsonDocument>();
    std::string reason;
    if (!ConfigStoreDocument::ParseFile(KERNEL_FACTS_FILE, *facts, &reason)) {
        return {nullptr, reason};
    }
    return facts->IsObject() ? ParsedKernelFacts{facts, ""} : ParsedKernelFacts{nullptr, "not an object"};
}

ParsedKernelFacts ParseOncePerSnapshot()
{
    return OncePerZelSnapshot(&ZelSnapshotFacts::kernel, Parse);
}
}  // namespace

KernelFacts LoadKernelFacts()
{
    const ParsedKernelFacts parsed = ParseOncePerSnapshot();
    if (parsed.facts == nullptr) {
        CSLogger::Log(CSLogger::ERROR, "Cannot read the kernel's facts from %s: %s", KERNEL_FACTS_FILE,
                      parsed.reason.c_str());
    }
    return parsed.facts;
}

int KernelInterfaceVersion()
{
    if (IsRealHost()) {
        return ZEL_INTERFACE_VERSION;
    }
    const KernelFacts facts = ParseOncePerSnapshot().facts;  // the first node that is read reports a missing file
    if (facts == nullptr) {
        return ZEL_INTERFACE_VERSION;
    }
    const auto version = facts->FindMember("interfaceVersion");
    return version != facts->MemberEnd() && version->value.IsInt() ? version->value.GetInt() : ZEL_INTERFACE_VERSION;
}

bool HasCapturedKernel()
{
    const KernelFacts facts = ParseOncePerSnapshot().facts;
    if (facts == nullptr) {
        return false;
    }
    const auto captured = facts->FindMember("capturedKernel");
    return captured != facts->MemberEnd() && captured->value.IsTrue();
}
