#pragma once

#include <ostream>
#include <string>

#include "ConfigStoreDocument.h"
#include "NimbConfigStore.h"

/// One of the calls that stage a configuration, on the host of BootHostTest.
struct StagingCall
{
    const char* name;
    void (*stage)();
    std::string notBegun;      ///< what it throws when the store is locked
    std::string notCommitted;  ///< what it throws when its transaction cannot be committed
    std::string noSchemas;     ///< what it throws when the schema store is locked
};

inline void PrintTo(const StagingCall& call, std::ostream* out)
{
    *out << call.name;
}

/// Calls @p set with a document whose value of network/dns is @p hostname.
inline void StageDocument(void (*set)(NimbConfigStore::JsonDocument&), const std::string& hostname = "new")
{
    NimbConfigStore::JsonDocument document;
    (void)ConfigStoreDocument::ParseText(R"({"nimb": {"network": {"dns": {"hostname": ")" + hostname +
                                             R"("}, "vswitch": [{"name": "a"}, {"name": "b"}]}}})",
                                         document);
    set(document);
}

inline const StagingCall STAGING_CALLS[] = {
    {"DesiredDocument", [] { StageDocument(NimbConfigStore::SetDesiredUserConfig); },
     "2000 Failed to start set desired transaction",
     "2000 SetDesiredUserConfig failed: Failed to commit set desired transaction",
     "2000 SetDesiredUserConfig failed: Failed to open the schema store /var/lib/talvor/configstore/schema-store"},
    {"SmartnicConfiguration", [] { StageDocument(NimbConfigStore::SetDesiredSmartnicConfiguration); },
     "2000 Failed to start set desired transaction",
     "2000 SetDesiredSmartnicConfiguration failed: Failed to commit set desired transaction",
     "2000 Failed to attach schema store"},
    {"HostApiDelete", [] { NimbConfigStore::DeleteHostAPIConfiguration("nimb", "network", "dns"); },
     "2000 Failed to start Delete HostAPI transaction",
     "1012 for component nimb group network key dns in Delete HostAPI",
     "2000 Failed to open the schema store /var/lib/talvor/configstore/schema-store"},
};
