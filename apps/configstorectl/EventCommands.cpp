#include <poll.h>
#include <sys/inotify.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>

#include "Commands.h"
#include "HeldSignals.h"
#include "HostEvents.h"
#include "HostUtil.h"

namespace ConfigStoreCtl
{
namespace
{
Listing EventListing(const std::vector<std::string>& lines)
{
    // The widths fit every event, so that a table that goes on stays aligned.
    Listing listing{{{"TIME", "time", 24}, {"KIND", "kind", 11}, {"ID", "id", 41}, {"TEXT", "text"}, {nullptr, "args"}},
                    {}};
    for (const std::string& line : lines) {
        const HostEvent event = ParseEvent(line);
        listing.rows.push_back({event.time, event.kind, event.id, event.text, event.args});
    }
    return listing;
}

class Descriptor
{
public:
    Descriptor(int number, const char* what) : number_(number)
    {
        if (number_ == -1) {
            throw CommandFailure(what, std::strerror(errno));
        }
    }
    ~Descriptor() { close(number_); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int Number() const { return number_; }

private:
    int number_;
};

/// Takes what a descriptor that does not block has to give.
void Drain(const Descriptor& descriptor)
{
    std::array<char, 4096> bytes{};
    while (read(descriptor.Number(), bytes.data(), bytes.size()) > 0) {
    }
}

/// Waits for a change in the folder of the events. False when the user, or the reader of the output, has had enough.
class EventWait
{
public:
    EventWait()
        : ended_(signalfd(-1, &signals_.Set(), SFD_CLOEXEC | SFD_NONBLOCK), "signals"),
          changed_(inotify_init1(IN_CLOEXEC | IN_NONBLOCK), "inotify")
    {
        const std::string folder = HostPath(EVENT_FOLDER);
        if (inotify_add_watch(changed_.Number(), folder.c_str(), IN_MODIFY | IN_CREATE | IN_MOVED_TO) == -1) {
            throw CommandFailure(EVENT_FOLDER, std::string("cannot be watched: ") + std::strerror(errno));
        }
    }

    bool ForChange()
    {
        std::array<pollfd, 3> waits{
            {{changed_.Number(), POLLIN, 0}, {ended_.Number(), POLLIN, 0}, {STDOUT_FILENO, 0, 0}}};
        while (poll(waits.data(), waits.size(), -1) == -1 && errno == EINTR) {
        }
        Drain(changed_);  // that there was a change is all we need
        Drain(ended_);    // or the signal would be delivered after all once it is no longer held back
        return waits[1].revents == 0 && waits[2].revents == 0;
    }

private:
    HeldSignals signals_{SIGINT, SIGTERM};  // held, they can be waited for together with new events
    Descriptor ended_;
    Descriptor changed_;
};

void Follow(Output& output)
{
    EventWait wait;  // before the first read: what comes between is seen either way
    LineTail events(EVENT_FILE);
    output.Stream(EventListing(events.NewLines()), true);
    output.Flush();
    while (wait.ForChange()) {
        output.Stream(EventListing(events.NewLines()), false);
        output.Flush();
    }
}
}  // namespace

void Events(const Arguments& arguments, Output& output)
{
    if (arguments.Has("--follow")) {
        Follow(output);
    } else {
        output.Table(EventListing(LineTail(EVENT_FILE).NewLines()));
    }
}
}  // namespace ConfigStoreCtl
