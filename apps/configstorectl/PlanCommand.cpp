#include <fmt/format.h>

#include <algorithm>
#include <string_view>
#include <utility>

#include "BootModes.h"
#include "ChangeReasons.h"
#include "Commands.h"
#include "HostEvents.h"
#include "HostUtil.h"
#include "NimbConfigStore.h"
#include "ObjectPath.h"
#include "Program.h"
#include "ScratchHost.h"
#include "StagingReport.h"
#include "StoreKeys.h"
#include "ZubEvents.h"

// desired plan: boots a copy of the host and tells what that changed.
namespace ConfigStoreCtl
{
namespace
{
constexpr const char* ADDED = "added";
constexpr const char* CHANGED = "changed";
constexpr const char* REMOVED = "removed";
constexpr const char* REFUSED = "refused";

constexpr const char* PLATFORM_FOLDER = "/etc/talvor/platform";
constexpr const char* KERNEL_FACTS_FILE = "/etc/talvor/platform/kernel.json";
constexpr const char* SAME_BOOT_FS = "00000000-0000-4000-8000-000000000000";

/// One thing that the boot does not apply, and why.
struct Refusal
{
    std::string object;
    std::optional<std::string> identifier;
    std::vector<std::string> why;
};

struct Plan
{
    std::optional<int> mode;
    std::vector<StoreRow> staged;
    std::vector<RowChange> changes;
    std::vector<Refusal> refusals;
    std::string failure;  ///< why nothing that is staged would be applied; empty when it would
};

/// The copy boots the software that is installed now, from where the host booted: neither schemas are processed nor
/// upgrade modules run.
void KeepSoftware()
{
    const std::string facts = std::string(R"({"bootCmdLine": "", "bootMAC": "", "bootOption": "00000000", )") +
                              R"("bootFsUUID": ")" + SAME_BOOT_FS + "\"}";
    const DBStore::ConnectionPtr store = DBStore::GetConnection(DBStore::Type::ConfigStore, true);
    if (HostMakeFolders(PLATFORM_FOLDER) != 0 || HostReplaceFile(KERNEL_FACTS_FILE, facts) != 0 || store == nullptr ||
        DBStore::WriteKeyValue(NimbConfigStore::BOOT_FS_UUID, SAME_BOOT_FS, store) != DBStore::SUCCESS) {
        throw CommandFailure(HostRoot(), "the copy of the host cannot be prepared");
    }
}

// ---- what the boot does not apply ---------------------------------------------------------------------------------

/// @return whether @p text ended with @p end, which is then gone.
bool TakeEnd(std::string_view& text, std::string_view end)
{
    const bool found = text.ends_with(end);
    text.remove_suffix(found ? end.size() : 0);
    return found;
}

/// The object that a line about the boot document names: "NAME is empty", "/PLACE is invalid", "… for NAME" or
/// "REASON: NAME", each with ", skipping" behind it.
std::string SkippedObject(const std::string& line)
{
    std::string_view text = line;
    if (!TakeEnd(text, ", skipping")) {
        return "";
    }
    if (TakeEnd(text, " is empty") || TakeEnd(text, " is invalid")) {
        return std::string(text.substr(text.starts_with('/') ? 1 : 0));
    }
    for (const std::string_view words : {"Schema not found for ", "Validation failed for "}) {
        if (text.starts_with(words)) {
            return std::string(text.substr(words.size()));
        }
    }
    const std::size_t reason = text.rfind(": ");
    return reason == std::string_view::npos ? "" : std::string(text.substr(reason + 2));
}

/// The objects of the boot document that the boot passed over, each with the findings that were logged before.
std::vector<Refusal> SkippedObjects(const std::vector<std::string>& errorLines)
{
    std::vector<Refusal> refusals;
    std::vector<std::string> why;
    for (const std::string& line : errorLines) {
        why.push_back(line);
        if (const std::string object = SkippedObject(line); !object.empty()) {
            refusals.push_back({object, std::nullopt, std::exchange(why, {})});
        }
    }
    return refusals;
}

std::vector<Refusal> AllStaged(const Plan& plan)
{
    std::vector<Refusal> refusals;
    for (const StoreRow& row : plan.staged) {
        refusals.push_back({ObjectOf(row), row[STAGED_IDENTIFIER], {plan.failure}});
    }
    return refusals;
}

void AddRefusals(Plan& plan, const std::vector<HostEvent>& events, const std::vector<std::string>& errorLines)
{
    const auto tellsFailure = [](const HostEvent& event) {
        return event.id == NimbConfigStore::ZUB_DESIRED_CONFIG_ERROR;
    };
    if (std::any_of(events.begin(), events.end(), tellsFailure)) {
        plan.failure = Joined(errorLines);
        plan.refusals = plan.mode == NimbConfigStore::BOOTMODE_BOOT_CONFIG ? std::vector<Refusal>{} : AllStaged(plan);
    } else if (plan.mode == NimbConfigStore::BOOTMODE_BOOT_CONFIG) {
        plan.refusals = SkippedObjects(errorLines);
    }
}

Plan MakePlan()
{
    const ScratchHost host;
    KeepSoftware();
    Plan plan{StoredBootMode(), ReadStaged(), {}, {}, ""};
    ConfigSnapshot snapshot;
    CallWatch watch;
    host.ThrowIfInterrupted();
    const bool complete = NimbConfigStore::LoadStore(false) == 0;
    host.ThrowIfInterrupted();
    const std::vector<HostEvent> events = watch.Events();
    if (!complete) {
        throw CommandFailure("the next boot fails", WhyLoadEnded(events));
    }
    plan.changes = snapshot.Changes();
    AddRefusals(plan, events, watch.ErrorLines());
    return plan;
}

// ---- the report ---------------------------------------------------------------------------------------------------

const char* KindOf(const RowChange& change)
{
    return !change.before ? ADDED : change.after ? CHANGED : REMOVED;
}

/// A row of the report. @param why  what people read in one column, @param lines  and in the other.
std::vector<Field> ReportRow(const char* kind, const std::string& object, const Field& identifier,
                             const std::vector<std::string>& reasons, const std::string& why, const TextLines& lines,
                             const JsonText& members)
{
    std::vector<std::string> parts = SplitObjectPath(object);
    parts.resize(3);
    const auto part = [&parts](std::size_t i) { return parts[i].empty() ? Field() : Field(parts[i]); };
    return {kind, object, part(0), part(1), part(2), identifier, why, reasons, lines, members};
}

Listing ReportRows(const Plan& plan)
{
    Listing listing{{{"CHANGE", "change"},
                     {"OBJECT", nullptr},
                     {nullptr, "component"},
                     {nullptr, "group"},
                     {nullptr, "key"},
                     {"IDENTIFIER", "identifier"},
                     {"WHY", nullptr},
                     {nullptr, "reasons"},
                     {"MEMBERS", nullptr},
                     {nullptr, "members"}},
                    {}};
    const ChangeReasons reasons(plan.mode.value_or(NimbConfigStore::BOOTMODE_NONE), plan.staged);
    for (const RowChange& change : plan.changes) {
        const StoreRow& row = change.Row();
        const std::vector<std::string> why = reasons.Of(change);
        listing.rows.push_back(ReportRow(KindOf(change), ObjectOf(row), TextOf(row[CONFIG_IDENTIFIER]), why,
                                         fmt::format("{}", fmt::join(why, ", ")), ChangeLines(change.members),
                                         ChangeRecords(change.members)));
    }
    for (const Refusal& refusal : plan.refusals) {
        listing.rows.push_back(
            ReportRow(REFUSED, refusal.object, TextOf(refusal.identifier), refusal.why, "-", {refusal.why}, {"[]"}));
    }
    return listing;
}

std::int64_t Count(const Plan& plan, const char* kind)
{
    return std::count_if(plan.changes.begin(), plan.changes.end(),
                         [kind](const RowChange& change) { return KindOf(change) == kind; });
}

std::string Summary(const Plan& plan)
{
    const std::string boot = plan.failure.empty() ? "the next boot applies " : "the next boot fails to apply ";
    const std::string rows = plan.changes.empty()
                                 ? "no row changes"
                                 : fmt::format("rows added {}, changed {}, removed {}", Count(plan, ADDED),
                                               Count(plan, CHANGED), Count(plan, REMOVED));
    const std::string refused = plan.refusals.empty() ? "" : fmt::format(", refused {}", plan.refusals.size());
    return boot + BootModeText(plan.mode) + ": " + rows + refused;
}

Listing Facts(const Plan& plan)
{
    return {{{nullptr, "bootMode"},
             {nullptr, "bootModeName"},
             {nullptr, ADDED},
             {nullptr, CHANGED},
             {nullptr, REMOVED},
             {nullptr, REFUSED}},
            {{plan.mode ? Field(std::int64_t{*plan.mode}) : Field(),
              plan.mode ? Field(BootModeName(*plan.mode)) : Field(), Count(plan, ADDED), Count(plan, CHANGED),
              Count(plan, REMOVED), static_cast<std::int64_t>(plan.refusals.size())}}};
}
}  // namespace

void DesiredPlan(const Arguments&, Output& output)
{
    const Plan plan = MakePlan();
    output.Report(ReportRows(plan), Summary(plan), Facts(plan));
    if (!plan.failure.empty()) {
        output.Refuse("the next boot fails to apply " + BootModeText(plan.mode) + ": " + plan.failure);
    } else if (!plan.changes.empty()) {
        output.Answer(EXIT_WOULD_CHANGE);
    }
}
}  // namespace ConfigStoreCtl
