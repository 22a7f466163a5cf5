#pragma once

#include <optional>
#include <string>
#include <vector>

#include "LineTail.h"

namespace ConfigStoreCtl
{
inline constexpr const char* LOG_FILE = "/var/log/talvor/configstore.log";
inline constexpr const char* EVENT_FOLDER = "/var/log/talvor";
inline constexpr const char* BOOT_LOG = "/var/log/talvor/configstore-boot.log";
inline constexpr const char* EVENT_FILE = "/var/log/talvor/events.jsonl";

/// An observation event or a system alert that the host raised.
struct HostEvent
{
    std::string time;
    std::string kind;  ///< "observation", "alert", or "unreadable" for a line that is no event; its text is the line
    std::string id;    ///< empty for an alert
    std::string text;
    std::vector<std::string> args;
};

HostEvent ParseEvent(const std::string& line);

/// What the host logs as errors, and raises as events, from the moment it is made: the only answer of those library
/// calls that neither return nor throw their failures. A log that cannot be read tells nothing; it does not keep the
/// call from being made.
class CallWatch
{
public:
    CallWatch();

    /// The error lines that this process logged, one by one and joined, or its errors and warnings in their order;
    /// empty when there are none. Each call passes over all lines that there are.
    std::vector<std::string> ErrorLines();
    std::string Errors();
    std::vector<std::string> ErrorAndWarningLines();

    /// The events raised, by any process.
    std::vector<HostEvent> Events();

    /// @throws std::runtime_error with the error lines when there are any, or with @p otherwise when that is given.
    void ThrowErrors(const std::string& otherwise = "");

private:
    std::vector<std::string> LinesOf(const std::vector<std::string>& levels);

    LineTail log_;
    LineTail events_;
};

/// The text of the last alert among @p events; without one, that the load's log tells more.
std::string WhyLoadEnded(const std::vector<HostEvent>& events);

/// The lines, joined by "; ".
std::string Joined(const std::vector<std::string>& lines);

/// A line that this process logged.
struct OwnLogLine
{
    std::string level;
    std::string text;
};

/// Takes a line "TIME LEVEL [PROCESS] TEXT" of the log apart; nothing for one of another process.
std::optional<OwnLogLine> ParseOwnLogLine(const std::string& line);

/// From now on @p tail has only what is added, if it can be read.
void SkipToEndIfReadable(LineTail& tail);

/// The new lines of @p tail; none when it cannot be read.
std::vector<std::string> NewLinesIfReadable(LineTail& tail);

/// "ID: TEXT" of each event, "alert: TEXT" of each alert.
std::vector<std::string> EventTexts(const std::vector<HostEvent>& events);
}  // namespace ConfigStoreCtl
