#pragma once

#include <string>
#include <vector>

#include "LineTail.h"

namespace ConfigStoreCtl
{
inline constexpr const char* EVENT_FOLDER = "/var/log/talvor";
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

    /// The error lines that this process logged, joined; empty when there are none.
    std::string Errors();

    /// The events raised, by any process.
    std::vector<HostEvent> Events();

    /// @throws std::runtime_error with the error lines when there are any, or with @p otherwise when that is given.
    void ThrowErrors(const std::string& otherwise = "");

private:
    LineTail log_;
    LineTail events_;
};

/// The new lines of @p tail; none when it cannot be read.
std::vector<std::string> NewLinesIfReadable(LineTail& tail);

/// "ID: TEXT" of each event, "alert: TEXT" of each alert.
std::vector<std::string> EventTexts(const std::vector<HostEvent>& events);
}  // namespace ConfigStoreCtl
