#include "Commands.h"
#include "DesiredFindings.h"
#include "DesiredInstances.h"
#include "DocumentFile.h"
#include "HostEvents.h"
#include "NimbConfigStore.h"
#include "ObjectPath.h"
#include "StagingReport.h"

using NimbConfigStore::JsonDocument;

// The commands that stage what the next boot applies.
namespace ConfigStoreCtl
{
namespace
{
constexpr const char* NOTHING_STAGED = "; nothing was staged";

/// Staging needs both stores; the library's calls would not say which file is missing.
void RequireStores()
{
    RequireStore(DBStore::Type::ConfigStore);
    RequireStore(DBStore::Type::SchemaStore);
}

JsonDocument CopyOf(const JsonDocument& document)
{
    JsonDocument copy;
    copy.CopyFrom(document, copy.GetAllocator());
    return copy;
}

/// @param given  the document, @param staged  and what staging made of it.
void PrintStaged(const JsonDocument& given, const JsonDocument& staged, bool profile, StagingReport& report,
                 Output& output)
{
    const auto cache = NimbSchemaStore::SchemaStore::GetStore(false)->GetCache();
    report.PrintDocument(InstancesOf(given, staged, *cache, profile), output);
}
}  // namespace

void DesiredSet(const Arguments& arguments, Output& output)
{
    const std::string& file = arguments.values[0];
    JsonDocument given;
    ParseDocument(file, given);
    RequireStores();
    if (const Listing findings = SchemaFindings(file, given); !findings.rows.empty()) {
        RefuseDocument(file, findings, NOTHING_STAGED, output);
        return;
    }
    StagingReport report;
    CallWatch watch;
    JsonDocument desired = CopyOf(given);
    try {
        NimbConfigStore::SetDesiredUserConfig(desired);
    } catch (const std::exception& failure) {
        throw CommandFailure(file, WhyNotStaged(failure, watch.ErrorLines()));
    }
    PrintStaged(given, desired, true, report, output);
}

void DesiredSmartnic(const Arguments& arguments, Output& output)
{
    const std::string& file = arguments.values[0];
    JsonDocument given;
    ParseDocument(file, given);
    RequireStores();
    StagingReport report;
    CallWatch watch;
    JsonDocument desired = CopyOf(given);
    try {
        NimbConfigStore::SetDesiredSmartnicConfiguration(desired);
    } catch (const std::exception& failure) {
        const std::vector<std::string> errorLines = watch.ErrorLines();
        const Listing findings = LoggedFindings(file, errorLines);
        if (findings.rows.empty()) {
            throw CommandFailure(file, WhyNotStaged(failure, errorLines));
        }
        RefuseDocument(file, findings, NOTHING_STAGED, output);
        return;
    }
    PrintStaged(given, desired, false, report, output);
}

void DesiredDelete(const Arguments& arguments, Output& output)
{
    const std::string& object = arguments.values[0];
    const std::vector<std::string> parts = SplitObjectPath(object);
    RequireStores();
    StagingReport report;
    CallWatch watch;
    try {
        NimbConfigStore::DeleteHostAPIConfiguration(parts[0].c_str(), parts[1].c_str(), parts[2].c_str());
    } catch (const std::exception& failure) {
        throw CommandFailure(object, WhyNotStaged(failure, watch.ErrorLines()));
    }
    report.PrintDelete(object, output);
}
}  // namespace ConfigStoreCtl
