#pragma once

#include <sys/types.h>

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <string>
#include <thread>

namespace ConfigStoreCtl
{
/// Where a long command shows how far it is.
struct ProgressPlace
{
    int terminal = -1;                      ///< descriptor; -1: nowhere
    std::size_t width = 0;                  ///< columns
    std::chrono::milliseconds delay{1000};  ///< none: at once
};

/// While it lives, a line on the terminal with the elapsed seconds and the newest line that this process logged, once
/// the delay is over. Its end erases the line.
class Progress
{
public:
    explicit Progress(const ProgressPlace& place);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

private:
    void Run();
    void Stop();
    void Draw();
    void OpenLog();
    void ReadLog();
    void Write(const std::string& text) const;

    ProgressPlace place_;
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
    const std::string logPath_;  // the real one: the command may work on another root meanwhile
    int log_ = -1;
    off_t offset_ = 0;
    std::string newest_;
    std::mutex mutex_;
    std::condition_variable changed_;
    bool ended_ = false;
    bool drawn_ = false;
    std::thread thread_;
};
}  // namespace ConfigStoreCtl
