#include <syslog.h>

#include <cstdarg>

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
}  // namespace

void HostSyslog(int priority, const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    const std::string text = PrintfText(format, arguments);
    va_end(arguments);
    if (IsRealHost()) {
        syslog(priority, "%s", text.c_str());
    } else if (const spdlog::sink_ptr file = OpenLogFile(SYSLOG_FILE, LogFileMode::Append)) {
        WriteLogLine(*file, LevelOf(priority), text);
    }
}
