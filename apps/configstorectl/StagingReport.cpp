#include "StagingReport.h"

#include "BootModes.h"
#include "HostUtil.h"
#include "InspectStatements.h"
#include "StorePaths.h"

namespace ConfigStoreCtl
{
namespace
{
constexpr const char* STAGED = "staged";
constexpr const char* PRESERVED = "preserved";
constexpr const char* DEFAULT = "default";
constexpr const char* DELETED = "deleted";
constexpr const char* REPLACED = "replaced";
constexpr const char* DROPPED = "dropped";
constexpr const char* KEPT = "kept";

const std::vector<Column> COLUMNS = {{"WHAT", "what"},         {"OBJECT", nullptr}, {nullptr, "component"},
                                     {nullptr, "group"},       {nullptr, "key"},    {"IDENTIFIER", "identifier"},
                                     {"ACTION", "bootAction"}, {"WHY", nullptr},    {nullptr, "why"},
                                     {nullptr, "members"}};

bool IsNetworkPreserved()
{
    return FeatureState_InitSilentMode().preserveNetworkConfiguration &&
           File_Exists(NimbConfigStore::HOST_CONFIGURATION_FILE);
}

/// Why a row of the live configuration goes with a document that does not hold it.
std::string WhyPreserved(const std::string& object)
{
    if (object == "nimb/authorization/permissions") {
        return "permission of a solution user";
    }
    if (object == "nimb/advanced_options/user_vars") {
        return "option of the network virtualisation agent";
    }
    return IsNetworkPreserved() ? "this host preserves its network" : "switch that the document leaves out";
}

/// What the document holds, found by object and staged text.
using Origins = std::map<std::pair<std::string, std::string>, const DesiredInstance*>;

Origins OriginsOf(const std::vector<DesiredInstance>& instances)
{
    Origins origins;
    for (const DesiredInstance& instance : instances) {
        origins[{instance.object.toString(), instance.text}] = &instance;
    }
    return origins;
}

/// The objects whose default the document deletes, each as a row without values.
std::map<std::string, StoreRow> DeletedDefaults(const std::vector<DesiredInstance>& instances)
{
    std::map<std::string, StoreRow> deleted;
    for (const DesiredInstance& instance : instances) {
        if (instance.text == "\"DELETE_DEFAULT\"") {
            StoreRow row{instance.object.component, instance.object.group, instance.object.name};
            row.resize(STAGED_CACHED + 1);
            deleted[instance.object.toString()] = row;
        }
    }
    return deleted;
}
}  // namespace

std::vector<StoreRow> ReadStaged()
{
    return ReadRowsBelow(Statements::SHOW_STAGED, "");
}

StagingReport::StagingReport() : earlier_(ReadStaged()), earlierMode_(StoredBootMode()), listing_{COLUMNS, {}} {}

void StagingReport::Add(const char* what, const StoreRow& row, const std::string& why, const MemberChanges& filledIn)
{
    TextLines lines{{why}};
    for (const std::string& line : ChangeLines(filledIn).texts) {
        lines.texts.push_back("filled in: " + line);
    }
    listing_.rows.push_back({what, ObjectOf(row), TextOf(row[0]), TextOf(row[1]), TextOf(row[2]),
                             TextOf(row[STAGED_IDENTIFIER]), TextOf(row[STAGED_ACTION]), lines, why,
                             ChangeRecords(filledIn)});
    ++counts_[what];
}

void StagingReport::AddCarriedOver(const StoreRow& row)
{
    if (!row[STAGED_ACTION]) {
        Add(DEFAULT, row, "default of an object that the document does not mention");
    } else if (row[STAGED_ACTION] == "SET") {
        Add(PRESERVED, row, WhyPreserved(ObjectOf(row)));
    } else {
        Add(STAGED, row, "shared object that the document leaves out");
    }
}

void StagingReport::AddEarlier(const std::vector<StoreRow>& now)
{
    std::map<StoreRow, StoreRow> staged;
    for (const StoreRow& row : now) {
        staged[KeyOf(row)] = row;
    }
    for (const StoreRow& row : earlier_) {
        const auto again = staged.find(KeyOf(row));
        if (again == staged.end()) {
            Add(DROPPED, row, "staged earlier, not any more");
        } else if (again->second != row) {
            Add(REPLACED, row, "staged earlier, otherwise");
        }
    }
}

void StagingReport::PrintDocument(const std::vector<DesiredInstance>& instances, Output& output)
{
    const Origins origins = OriginsOf(instances);
    std::map<std::string, StoreRow> deleted = DeletedDefaults(instances);
    const std::vector<StoreRow> now = ReadStaged();
    for (const StoreRow& row : now) {
        const auto origin = origins.find({ObjectOf(row), row[STAGED_VALUE].value_or("")});
        if (origin != origins.end()) {
            Add(STAGED, row, "the document", origin->second->filledIn);
        } else if (row[STAGED_ACTION] == "DELETE" && deleted.count(ObjectOf(row)) != 0) {
            deleted[ObjectOf(row)] = row;
        } else {
            AddCarriedOver(row);
        }
    }
    for (const auto& [object, row] : deleted) {
        Add(DELETED, row, "DELETE_DEFAULT in the document");
    }
    AddEarlier(now);
    Print(output);
}

void StagingReport::PrintDelete(const std::string& object, Output& output)
{
    StoreRow deleted;
    for (const StoreRow& row : ReadRowsBelow(Statements::SHOW_STAGED, object)) {
        if (row[STAGED_ACTION] == "DELETE") {
            deleted = row;
        } else if (row[STAGED_ACTION]) {
            Add(KEPT, row, "staged earlier: outlives the delete");
        } else {
            Add(DROPPED, row, "default staged earlier: no longer applies");
        }
    }
    if (!deleted.empty()) {
        Add(STAGED, deleted, "every row of the object goes");
    }
    Print(output);
}

void StagingReport::Print(Output& output)
{
    const int mode = NimbConfigStore::GetBootMode();
    const std::string nextBoot = "; the next boot applies " + BootModeText(mode);
    const std::string earlier = earlierMode_ && *earlierMode_ != NimbConfigStore::BOOTMODE_NONE && *earlierMode_ != mode
                                    ? ", no longer " + BootModeText(*earlierMode_)
                                    : "";
    std::string summary;
    std::vector<Field> facts{std::int64_t{mode}, BootModeName(mode),
                             earlierMode_ ? Field(std::int64_t{*earlierMode_}) : Field()};
    Listing factsListing{{{nullptr, "bootMode"}, {nullptr, "bootModeName"}, {nullptr, "earlierBootMode"}}, {}};
    for (const char* what : {STAGED, PRESERVED, DEFAULT, DELETED, KEPT, REPLACED, DROPPED}) {
        const std::int64_t count = counts_[what];
        if (count != 0) {
            summary += (summary.empty() ? "" : ", ") + std::string(what) + " " + std::to_string(count);
        }
        factsListing.columns.push_back({nullptr, what});
        facts.emplace_back(count);
    }
    factsListing.rows.push_back(facts);
    output.Report(listing_, (summary.empty() ? "staged nothing" : summary) + nextBoot + earlier, factsListing);
}
}  // namespace ConfigStoreCtl
