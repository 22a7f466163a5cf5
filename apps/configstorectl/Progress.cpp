#include "Progress.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <pthread.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <sstream>

#include "HostEvents.h"
#include "HostUtil.h"
#include "TerminalText.h"

namespace ConfigStoreCtl
{
namespace
{
constexpr std::chrono::milliseconds BETWEEN{250};
constexpr const char* ERASED = "\r\x1b[K";
}  // namespace

Progress::Progress(const ProgressPlace& place) : place_(place), logPath_(HostPath(LOG_FILE))
{
    if (place_.terminal == -1) {
        return;
    }
    OpenLog();
    offset_ = log_ == -1 ? 0 : lseek(log_, 0, SEEK_END);
    if (place_.delay.count() == 0) {
        Draw();
    }
    // Signals are for the thread that does the work.
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    thread_ = std::thread([this] { Run(); });
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

Progress::~Progress()
{
    if (!thread_.joinable()) {
        return;
    }
    Stop();
    if (drawn_) {
        Write(ERASED);
    }
    if (log_ != -1) {
        close(log_);
    }
}

void Progress::Stop()
{
    {
        const std::lock_guard lock(mutex_);
        ended_ = true;
    }
    changed_.notify_one();
    thread_.join();
}

void Progress::Run()
{
    std::unique_lock lock(mutex_);
    const auto ended = [this] { return ended_; };
    for (auto wait = std::max(place_.delay, BETWEEN); !changed_.wait_for(lock, wait, ended); wait = BETWEEN) {
        Draw();
    }
}

void Progress::OpenLog()
{
    log_ = open(logPath_.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
}

/// Takes the newest of the lines that were added; a log that cannot be read has none.
void Progress::ReadLog()
{
    if (log_ == -1) {
        OpenLog();  // the first line makes the file
    }
    std::array<char, 65536> buffer{};
    std::string text;
    for (ssize_t count = 0; (count = pread(log_, buffer.data(), buffer.size(), offset_)) > 0; offset_ += count) {
        text.append(buffer.data(), static_cast<std::size_t>(count));
    }
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        if (const std::optional<OwnLogLine> own = ParseOwnLogLine(line); own && !own->text.empty()) {
            newest_ = own->text;
        }
    }
}

void Progress::Draw()
{
    ReadLog();
    const auto elapsed = std::chrono::steady_clock::now() - start_;
    const std::string line =
        fmt::format("{} s  {}", std::chrono::duration_cast<std::chrono::seconds>(elapsed).count(), newest_);
    // The last column stays free: a terminal would go on to the next line, which nobody erases.
    Write(ERASED + CutToWidth(EscapeControls(line), place_.width - 1));
    drawn_ = true;
}

void Progress::Write(const std::string& text) const
{
    (void)!write(place_.terminal, text.data(), text.size());  // a terminal that has gone needs no progress
}
}  // namespace ConfigStoreCtl
