#pragma once

#include <cstdint>

#include "ConfigStoreException.h"

#pragma GCC visibility push(default)

/// The store's log. On a real host it goes to the system log and to /var/log/talvor/configstore.log; inside
/// another host root to that root's file alone. A line is written whole or not at all; nothing here throws.
class CSLogger
{
public:
    /// How much a line matters.
    enum log_priority : int
    {
        ERROR = 0,
        WARNING = 1,
        INFO = 2,
        DEBUG = 3,
    };

    /// Names one registered file logger; 0 is none.
    using FileLoggerHandle = std::uint32_t;

    /// Writes one line, formatted like printf.
    static void Log(log_priority priority, const char* format, ...) __attribute__((format(printf, 2, 3)));

    /// Writes one line: the message template of @p code, one of CSErrorCodes (ErrorMessageForId), filled
    /// with the arguments.
    static void LogErrCode(log_priority priority, int code, ...);

    /// Starts copying every line to /var/log/talvor/NAME.log as well, which is begun anew.
    /// It takes the place of an earlier logger of the same name. Gives 0, and changes nothing, when the file cannot
    /// be opened.
    static FileLoggerHandle AddFileLogger(const char* name);

    /// Stops the copying that @p handle names; the file stays.
    static void RemoveFileLogger(FileLoggerHandle handle);

    /// Copies every line to standard error from now on (or no longer).
    static void SetVerbose(bool verbose);
};

#pragma GCC visibility pop
