#include <fmt/format.h>

#include <array>
#include <optional>
#include <regex>

#include "BootModes.h"
#include "Commands.h"
#include "HostEvents.h"
#include "NimbConfigStore.h"
#include "StoreKeys.h"
#include "StoreReader.h"
#include "ZEL.h"

namespace ConfigStoreCtl
{
namespace
{
// ---- load ---------------------------------------------------------------------------------------------------------

/// The mode that the load found: it is consumed by then, and the boot log alone still knows it.
std::optional<int> ModeOfLoad()
{
    const std::regex form("Generating desired user config: BootMode = (-?[0-9]+)$");
    std::optional<int> mode;
    LineTail log(BOOT_LOG);
    for (const std::string& line : NewLinesIfReadable(log)) {
        if (std::smatch match; std::regex_search(line, match, form)) {
            mode = std::stoi(match[1]);
        }
    }
    return mode;
}

// ---- facts --------------------------------------------------------------------------------------------------------

void ReadNode(ZEL_NodeID node, const char* path, void* buffer, std::size_t size)
{
    const ORV_ReturnStatus status = ZEL_Get(node, nullptr, buffer, size);
    if (status != ORV_OK) {
        throw CommandFailure(path, std::string("cannot be read: ") + ORV_ReturnStatusToString(status));
    }
}

std::string TextNode(ZEL_NodeID node, const char* path)
{
    std::array<char, 4096> text{};
    ReadNode(node, path, text.data(), text.size());
    return text.data();
}

std::string BootOption()
{
    std::array<unsigned char, 4> bytes{};
    ReadNode(ZEL_NODE_system_bootOption, "/system/bootOption", bytes.data(), bytes.size());
    return fmt::format("{:02x}", fmt::join(bytes, ""));
}

// ---- record -------------------------------------------------------------------------------------------------------

void ShowRecord(Output& output)
{
    const rapidjson::Document record = NimbConfigStore::getBootApplyRecord();
    const auto complete = record.FindMember("isBootComplete");
    const auto text = record.FindMember("bootApplyRecord");
    const bool isText = text != record.MemberEnd() && text->value.IsString();
    output.Record({{{"boot complete", "isBootComplete"}, {"record", "bootApplyRecord"}},
                   {{complete != record.MemberEnd() && complete->value.IsTrue(),
                     isText ? Field(std::string(text->value.GetString())) : Field()}}});
}
}  // namespace

void BootLoad(const Arguments& arguments, Output& output)
{
    CallWatch watch;
    const bool complete = NimbConfigStore::LoadStore(!arguments.Has("--no-restore")) == 0;
    const std::vector<HostEvent> events = watch.Events();
    const std::optional<int> mode = ModeOfLoad();
    const std::string info = complete ? ReadEntry(NimbConfigStore::BOOT_INFO) : "";
    output.Record({{{"result", "result"},
                    {"boot mode", nullptr},
                    {nullptr, "bootMode"},
                    {nullptr, "bootModeName"},
                    {"boot info", nullptr},
                    {nullptr, "bootInfo"},
                    {"events", "events"}},
                   {{complete ? "complete" : "failed", BootModeText(mode), mode ? Field(std::int64_t{*mode}) : Field(),
                     mode ? Field(BootModeName(*mode)) : Field(), info, info.empty() ? Field() : Field(JsonText{info}),
                     EventTexts(events)}}});
    if (!complete) {
        output.Refuse(WhyLoadEnded(events));
    }
}

void BootFacts(const Arguments&, Output& output)
{
    if (ZEL_CheckSig(ZEL_DefsMD5Sum, ZEL_INTERFACE_VERSION) != ORV_OK) {
        throw CommandFailure("kernel information interface", "has another signature or version");
    }
    const std::string remembered = ReadEntry(NimbConfigStore::BOOT_FS_UUID);
    const int mode = NimbConfigStore::GetBootMode();
    output.Record(
        {{{"command line", "bootCmdLine"},
          {"boot MAC", "bootMAC"},
          {"boot option", "bootOption"},
          {"boot file system", "bootFsUUID"},
          {"remembered", "rememberedBootFsUUID"},
          {"boot mode", nullptr},
          {nullptr, "bootMode"},
          {nullptr, "bootModeName"},
          {"installed", "isInstalled"},
          {"debug upgrade", "isDebugUpgrade"},
          {"installer has run", "isSkorlInstalled"},
          {"boot bank changed", "hasBootbankChanged"},
          {"upgrade", "isUpgrade"},
          {"automatic configuration", "isAutoConf"}},
         {{TextNode(ZEL_NODE_system_bootCmdLine, "/system/bootCmdLine"),
           TextNode(ZEL_NODE_system_bootMAC, "/system/bootMAC"), BootOption(),
           TextNode(ZEL_NODE_system_bootFsUUID, "/system/bootFsUUID"), remembered, BootModeText(mode),
           std::int64_t{mode}, BootModeName(mode), NimbConfigStore::IsInstalled(), NimbConfigStore::IsDebugUpgrade(),
           NimbConfigStore::IsSkorlInstalled(), NimbConfigStore::HasBootbankChanged(), NimbConfigStore::IsUpgrade(),
           NimbConfigStore::IsAutoConf()}}});
}

void BootMode(const Arguments& arguments, Output& output)
{
    RequireStore(DBStore::Type::ConfigStore);
    if (!arguments.values.empty()) {
        const NimbConfigStore::BOOTMODE wanted = ParseBootMode(arguments.values[0]);
        CallWatch watch;
        NimbConfigStore::SetBootMode(wanted);
        if (NimbConfigStore::GetBootMode() != wanted) {
            watch.ThrowErrors("the boot mode could not be written");
        }
    }
    const int mode = NimbConfigStore::GetBootMode();
    output.Record({{{"boot mode", nullptr}, {nullptr, "bootMode"}, {nullptr, "bootModeName"}},
                   {{BootModeText(mode), std::int64_t{mode}, BootModeName(mode)}}});
}

void BootNotify(const Arguments& arguments, Output& output)
{
    RequireStore(DBStore::Type::ConfigStore);
    const bool wanted = arguments.values[0] == NimbConfigStore::TRUE_STR;
    CallWatch watch;
    NimbConfigStore::EnableTrelldNotification(wanted);
    const bool notified = ReadEntry(NimbConfigStore::NOTIFY_TRELLD) == NimbConfigStore::TRUE_STR;
    watch.ThrowErrors(notified == wanted ? "" : "the switch could not be written");
    output.Record({{{"notification", "notification"}}, {{notified}}});
}

void BootFinish(const Arguments&, Output& output)
{
    RequireStore(DBStore::Type::ConfigStore);
    CallWatch watch;
    NimbConfigStore::EndAutoConf();
    NimbConfigStore::CleanupBootState();
    watch.ThrowErrors();
    output.Record({{{"automatic configuration", "isAutoConf"},
                    {"remembered boot file system", "rememberedBootFsUUID"},
                    {"live install", "liveInstall"}},
                   {{NimbConfigStore::IsAutoConf(), ReadEntry(NimbConfigStore::BOOT_FS_UUID),
                     ReadEntry(NimbConfigStore::POST_LIVE_INSTALL_BOOT) == NimbConfigStore::TRUE_STR}}});
}

void BootRecordShow(const Arguments&, Output& output)
{
    RequireStore(DBStore::Type::ConfigStore);
    if (ReadEntry(NimbConfigStore::BOOT_APPLY_RESULT).empty()) {
        throw CommandFailure(NimbConfigStore::BOOT_APPLY_RESULT, "no boot has written a record yet");
    }
    ShowRecord(output);
}

void BootRecordSet(const Arguments& arguments, Output& output)
{
    RequireStore(DBStore::Type::ConfigStore);
    CallWatch watch;
    NimbConfigStore::setBootApplyRecord(arguments.values[0]);
    watch.ThrowErrors();
    ShowRecord(output);
}

void BootRecordClear(const Arguments&, Output& output)
{
    RequireStore(DBStore::Type::ConfigStore);
    CallWatch watch;
    NimbConfigStore::clearBootApplyRecord();
    watch.ThrowErrors();
    ShowRecord(output);
}

void BootFailures(const Arguments&, Output& output)
{
    RequireStore(DBStore::Type::ConfigStore);
    RequireStore(DBStore::Type::SchemaStore);
    Listing listing{{{"OBJECT", nullptr}, {nullptr, "component"}, {nullptr, "group"}, {nullptr, "key"}}, {}};
    for (const NimbConfigStore::FailureRecord& failure : NimbConfigStore::GetBootTimeRestoreFailures()) {
        listing.rows.push_back({failure.component + "/" + failure.configGroup + "/" + failure.name, failure.component,
                                failure.configGroup, failure.name});
    }
    output.Table(listing);
}
}  // namespace ConfigStoreCtl
