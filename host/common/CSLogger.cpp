#include "CSLogger.h"

#include <syslog.h>

#include <cstdarg>
#include <map>
#include <mutex>

#include "HostUtil.h"
#include "LogFile.h"
#include "PrintfText.h"

namespace
{
const char* const LOG_FOLDER = "/var/log/talvor/";

// Where the lines go. Logging must never be what ends an operation, so every call swallows what it meets.
class StoreLog
{
public:
    // Never destroyed: other destructors at the end of the process may still log.
    static StoreLog& Instance()
    {
        static StoreLog& log = *new StoreLog;
        return log;
    }

    void Write(CSLogger::log_priority priority, const std::string& text);
    CSLogger::FileLoggerHandle AddCopy(const std::string& name);
    void RemoveCopy(CSLogger::FileLoggerHandle handle);
    void SetVerbose(bool verbose);

private:
    struct Copy
    {
        std::string name;
        spdlog::sink_ptr sink;
    };

    void FollowHostRoot();

    std::mutex mutex_;
    std::string root_;  // whose log file file_ is
    spdlog::sink_ptr file_;
    spdlog::sink_ptr standardError_;
    std::map<CSLogger::FileLoggerHandle, Copy> copies_;
    CSLogger::FileLoggerHandle lastHandle_ = 0;
};

spdlog::level::level_enum LevelOf(CSLogger::log_priority priority)
{
    switch (priority) {
        case CSLogger::ERROR:
            return spdlog::level::err;
        case CSLogger::WARNING:
            return spdlog::level::warn;
        case CSLogger::INFO:
            return spdlog::level::info;
        default:
            return spdlog::level::debug;
    }
}

int SyslogLevelOf(CSLogger::log_priority priority)
{
    constexpr int LEVELS[] = {LOG_ERR, LOG_WARNING, LOG_INFO, LOG_DEBUG};
    return priority >= CSLogger::ERROR && priority <= CSLogger::DEBUG ? LEVELS[priority] : LOG_DEBUG;
}

void StoreLog::FollowHostRoot()
{
    if (file_ == nullptr || root_ != HostRoot()) {
        file_ = OpenLogFile(std::string(LOG_FOLDER) + "configstore.log", LogFileMode::Append);
        root_ = HostRoot();
    }
}

void StoreLog::Write(CSLogger::log_priority priority, const std::string& text)
{
    const std::lock_guard lock(mutex_);
    FollowHostRoot();
    for (const spdlog::sink_ptr& sink : {file_, standardError_}) {
        if (sink != nullptr) {
            WriteLogLine(*sink, LevelOf(priority), text);
        }
    }
    for (const auto& [handle, copy] : copies_) {
        WriteLogLine(*copy.sink, LevelOf(priority), text);
    }
    if (IsRealHost()) {
        HostSyslog(SyslogLevelOf(priority), "%s", text.c_str());
    }
}

CSLogger::FileLoggerHandle StoreLog::AddCopy(const std::string& name)
{
    const std::lock_guard lock(mutex_);
    spdlog::sink_ptr sink = OpenLogFile(LOG_FOLDER + name + ".log", LogFileMode::BeginAnew);
    if (sink == nullptr) {
        return 0;
    }
    std::erase_if(copies_, [&name](const auto& copy) { return copy.second.name == name; });
    copies_.emplace(++lastHandle_, Copy{name, std::move(sink)});
    return lastHandle_;
}

void StoreLog::RemoveCopy(CSLogger::FileLoggerHandle handle)
{
    const std::lock_guard lock(mutex_);
    copies_.erase(handle);
}

void StoreLog::SetVerbose(bool verbose)
{
    const std::lock_guard lock(mutex_);
    standardError_ = verbose ? OpenStandardErrorLog() : nullptr;
}

void LogText(CSLogger::log_priority priority, const char* format, va_list arguments)
{
    try {
        StoreLog::Instance().Write(priority, PrintfText(format, arguments));
    } catch (const std::exception&) {
        // Out of memory; the line is lost.
    }
}
}  // namespace

void CSLogger::Log(log_priority priority, const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    LogText(priority, format, arguments);
    va_end(arguments);
}

void CSLogger::LogErrCode(log_priority priority, int code, ...)
{
    va_list arguments;
    va_start(arguments, code);
    LogText(priority, ErrorMessageForId(static_cast<NimbConfigStore::CSErrorCodes>(code)), arguments);
    va_end(arguments);
}

CSLogger::FileLoggerHandle CSLogger::AddFileLogger(const char* name)
{
    try {
        return StoreLog::Instance().AddCopy(name);
    } catch (const std::exception&) {
        return 0;
    }
}

void CSLogger::RemoveFileLogger(FileLoggerHandle handle)
{
    StoreLog::Instance().RemoveCopy(handle);
}

void CSLogger::SetVerbose(bool verbose)
{
    StoreLog::Instance().SetVerbose(verbose);
}
