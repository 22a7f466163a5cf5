#pragma once

#include <spdlog/common.h>

#include <string>

enum class LogFileMode
{
    Append,
    BeginAnew,
};

/// A log file with the logical path @p path, each line written whole by one write; its folder is created when it is
/// missing. (The stock file sink splits long lines and sleeps when a file cannot be opened.) Null on failure.
spdlog::sink_ptr OpenLogFile(const std::string& path, LogFileMode mode);

/// Standard error, with the same lines.
spdlog::sink_ptr OpenStandardErrorLog();

/// Writes "2026-11-21T07:30:38.123Z LEVEL [PID] TEXT", control characters of the text escaped.
void WriteLogLine(spdlog::sinks::sink& sink, spdlog::level::level_enum level, const std::string& text);
