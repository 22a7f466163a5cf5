#include "HostEvents.h"

#include <unistd.h>

#include <algorithm>
#include <stdexcept>

#include "ConfigStoreDocument.h"
#include "Output.h"

using NimbConfigStore::JsonDocument;
using NimbConfigStore::JsonValue;

namespace ConfigStoreCtl
{
namespace
{
std::string Member(const JsonValue& object, const char* name)
{
    const auto member = object.FindMember(name);
    return member != object.MemberEnd() && member->value.IsString() ? member->value.GetString() : "";
}
}  // namespace

HostEvent ParseEvent(const std::string& line)
{
    JsonDocument document;
    if (!ConfigStoreDocument::ParseText(line, document) || !document.IsObject()) {
        return {"", "unreadable", "", line, {}};
    }
    HostEvent event{
        Member(document, "time"), Member(document, "kind"), Member(document, "id"), Member(document, "text"), {}};
    if (ConfigStoreDocument::ValueExists(document, "args") && document["args"].IsArray()) {
        for (const JsonValue& argument : document["args"].GetArray()) {
            event.args.emplace_back(argument.IsString() ? argument.GetString() : "");
        }
    }
    return event;
}

std::optional<OwnLogLine> ParseOwnLogLine(const std::string& line)
{
    const std::string process = " [" + std::to_string(getpid()) + "] ";
    const std::size_t level = line.find(' ') + 1;
    const std::size_t end = line.find(' ', level);
    if (level == 0 || end == std::string::npos || line.compare(end, process.size(), process) != 0) {
        return std::nullopt;
    }
    return OwnLogLine{line.substr(level, end - level), line.substr(end + process.size())};
}

std::vector<std::string> NewLinesIfReadable(LineTail& tail)
{
    try {
        return tail.NewLines();
    } catch (const CommandFailure&) {
        return {};
    }
}

void SkipToEndIfReadable(LineTail& tail)
{
    try {
        tail.SkipToEnd();
    } catch (const CommandFailure&) {
        return;  // nor will its new lines be readable
    }
}

CallWatch::CallWatch() : log_(LOG_FILE), events_(EVENT_FILE)
{
    SkipToEndIfReadable(log_);
    SkipToEndIfReadable(events_);
}

std::vector<std::string> CallWatch::ErrorLines()
{
    return LinesOf({"error"});
}

std::vector<std::string> CallWatch::ErrorAndWarningLines()
{
    return LinesOf({"error", "warning"});
}

std::vector<std::string> CallWatch::LinesOf(const std::vector<std::string>& levels)
{
    std::vector<std::string> texts;
    for (const std::string& line : NewLinesIfReadable(log_)) {
        std::optional<OwnLogLine> own = ParseOwnLogLine(line);
        if (own && std::find(levels.begin(), levels.end(), own->level) != levels.end()) {
            texts.push_back(std::move(own->text));
        }
    }
    return texts;
}

std::string CallWatch::Errors()
{
    return Joined(ErrorLines());
}

std::vector<HostEvent> CallWatch::Events()
{
    std::vector<HostEvent> events;
    for (const std::string& line : NewLinesIfReadable(events_)) {
        events.push_back(ParseEvent(line));
    }
    return events;
}

void CallWatch::ThrowErrors(const std::string& otherwise)
{
    const std::string errors = Errors();
    if (!errors.empty() || !otherwise.empty()) {
        throw std::runtime_error(errors.empty() ? otherwise : errors);
    }
}

std::string WhyLoadEnded(const std::vector<HostEvent>& events)
{
    std::string text = std::string("the load ended early: see ") + BOOT_LOG;
    for (const HostEvent& event : events) {
        text = event.kind == "alert" ? event.text : text;
    }
    return text;
}

std::string Joined(const std::vector<std::string>& lines)
{
    std::string joined;
    for (const std::string& line : lines) {
        joined += (joined.empty() ? "" : "; ") + line;
    }
    return joined;
}

std::vector<std::string> EventTexts(const std::vector<HostEvent>& events)
{
    std::vector<std::string> texts;
    texts.reserve(events.size());
    for (const HostEvent& event : events) {
        texts.push_back((event.id.empty() ? event.kind : event.id) + ": " + event.text);
    }
    return texts;
}
}  // namespace ConfigStoreCtl
