#include <syslog.h>

#include <cstdarg>
#include <mutex>
#include <string>

#include "HostUtil.h"
#include "LogFile.h"
#include "PrintfText.h"

namespace
{
const char* const SYSLOG_FILE = "/var/log/talvor/syslog.log";

spdlog::level::level_enum LevelOf(int priority)
{
    switch (LOG_PRI(priority)) {
        case LOG_DEBUG:
            return spdlog::level::debug;
        case LOG_INFO:
        case LOG_NOTICE:
            return spdlog::level::info;
        case LOG_WARNING:
            return spdlog::level::warn;
        default:
            return spdlog::level::err;
    }
}
/// The file of the root in use, kept open. Null while it cannot be opened.
spdlog::sink_ptr SyslogFile()
{
    static std::mutex mutex;
    static std::string& root = *new std::string;  // never destroyed: other destructors may still log
    static spdlog::sink_ptr& file = *new spdlog::sink_ptr;
    const std::lock_guard lock(mutex);
    if (file == nullptr || root != HostRoot()) {
        file = OpenLogFile(SYSLOG_FILE, LogFileMode::Append);
        root = HostRoot();
    }
    return file;
}
}  // namespace

void HostSyslog(int priority, const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    const std::string text = PrintfText(format, arguments);
    va_end(arguments);
    if (IsRealHost()) {
        syslog(priority, "%s", text.c_str());
    } else if (const spdlog::sink_ptr file = SyslogFile()) {
        WriteLogLine(*file, LevelOf(priority), text);
    }
}
