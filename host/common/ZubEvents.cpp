#include "ZubEvents.h"

#include <fcntl.h>
#include <fmt/chrono.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#include <syslog.h>

#include <cerrno>
#include <chrono>
#include <cstdarg>
#include <cstring>
#include <string_view>
#include <vector>

#include "CSLogger.h"
#include "FileHandle.h"
#include "HostUtil.h"
#include "Utf8Text.h"

namespace
{
const char* const EVENT_FOLDER = "/var/log/talvor";
const char* const EVENT_FILE = "/var/log/talvor/events.jsonl";

struct Event
{
    const char* kind;
    std::string id;
    std::string text;
    std::vector<std::string> arguments;
};

std::string TimeNow()
{
    const auto now = std::chrono::time_point_cast<std::chrono::milliseconds>(std::chrono::system_clock::now());
    const auto millisecond = now.time_since_epoch().count() % 1000;
    return fmt::format("{:%FT%T}.{:03}Z", fmt::gmtime(std::chrono::system_clock::to_time_t(now)), millisecond);
}

std::string JsonLine(const Event& event)
{
    rapidjson::StringBuffer line;
    rapidjson::Writer<rapidjson::StringBuffer> writer(line);
    const auto text = [&writer](const std::string& value) {
        const std::string valid = ValidUtf8(value);
        writer.String(valid.data(), static_cast<rapidjson::SizeType>(valid.size()));
    };
    const auto member = [&](const char* name, const std::string& value) {
        writer.Key(name);
        text(value);
    };
    writer.StartObject();
    member("time", TimeNow());
    member("kind", event.kind);
    member("id", event.id);
    member("text", event.text);
    writer.Key("args");
    writer.StartArray();
    for (const std::string& argument : event.arguments) {
        text(argument);
    }
    writer.EndArray();
    writer.EndObject();
    return line.GetString() + std::string("\n");
}

// 0, or the errno of the step that failed.
int Append(const std::string& line)
{
    const int flags = O_WRONLY | O_CREAT | O_APPEND;
    FileHandle file(HostOpen(EVENT_FILE, flags));
    if (!file.IsOpen() && errno == ENOENT) {
        if (const int reason = HostMakeFolders(EVENT_FOLDER)) {
            return reason;
        }
        file = FileHandle(HostOpen(EVENT_FILE, flags));
    }
    return file.IsOpen() && file.AppendAll(line) ? 0 : errno;
}

bool Raise(const Event& event)
{
    if (IsRealHost()) {
        HostSyslog(LOG_NOTICE, "%s: %s", event.id.empty() ? event.kind : event.id.c_str(), event.text.c_str());
    }
    if (const int reason = Append(JsonLine(event))) {
        CSLogger::Log(CSLogger::ERROR, "Cannot write %s \"%s\" to %s: %s", event.kind, event.text.c_str(), EVENT_FILE,
                      std::strerror(reason));
        return false;
    }
    return true;
}

// The template with each %s replaced by the next argument; without a template the identifier has to do.
std::string TextOf(const std::string& id, const std::vector<std::string>& arguments)
{
    std::string text = id;
    for (const NimbConfigStore::ZubTemplate& entry : NimbConfigStore::ZUB_TEMPLATES) {
        if (id == entry.id) {
            text = entry.text;
        }
    }
    std::size_t place = 0;
    for (const std::string& argument : arguments) {
        place = text.find("%s", place);
        if (place == std::string::npos) {
            break;
        }
        text.replace(place, 2, argument);
        place += argument.size();
    }
    return text;
}
}  // namespace

namespace NimbConfigStore
{
void DumpZub(const std::string& id, int count, ...)
{
    va_list arguments;
    va_start(arguments, count);
    try {
        std::vector<std::string> texts;
        for (int i = 0; i < count; ++i) {
            const char* text = va_arg(arguments, const char*);
            texts.emplace_back(text != nullptr ? text : "");
        }
        const std::string text = TextOf(id, texts);
        (void)Raise({"observation", id, text, std::move(texts)});  // a failure has been logged
    } catch (const std::exception& e) {
        CSLogger::Log(CSLogger::ERROR, "Cannot raise %s: %s", id.c_str(), e.what());
    }
    va_end(arguments);
}

bool RaiseSystemAlert(const std::string& text)
{
    try {
        return Raise({"alert", "", text, {}});
    } catch (const std::exception& e) {
        CSLogger::Log(CSLogger::ERROR, "Cannot raise a system alert: %s", e.what());
        return false;
    }
}
}  // namespace NimbConfigStore
