#include "LogFile.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <spdlog/pattern_formatter.h>
#include <spdlog/sinks/base_sink.h>

#include <cerrno>
#include <cstring>
#include <memory>
#include <mutex>

#include "FileHandle.h"
#include "HostUtil.h"

namespace
{
const char* const LINE_PATTERN = "%Y-%m-%dT%H:%M:%S.%eZ %l [%P] %v";

class WholeLineSink : public spdlog::sinks::base_sink<std::mutex>
{
public:
    explicit WholeLineSink(FileHandle file)
        : base_sink(std::make_unique<spdlog::pattern_formatter>(LINE_PATTERN, spdlog::pattern_time_type::utc)),
          file_(std::move(file))
    {}

private:
    void sink_it_(const spdlog::details::log_msg& message) override
    {
        if (!TellOfLostLines() || !Append(message)) {
            reason_ = errno;
            ++lost_;
        }
    }

    void flush_() override {}

    bool Append(const spdlog::details::log_msg& message)
    {
        spdlog::memory_buf_t line;
        formatter_->format(message, line);
        return file_.AppendAll({line.data(), line.size()});
    }

    // As soon as there is room for a line again.
    bool TellOfLostLines()
    {
        if (lost_ != 0) {
            const std::string text = fmt::format("{} log lines were lost: {}", lost_, std::strerror(reason_));
            if (!Append({spdlog::string_view_t(), spdlog::level::warn, text})) {
                return false;
            }
        }
        lost_ = 0;
        return true;
    }

    const FileHandle file_;
    int lost_ = 0;    // lines that could not be written
    int reason_ = 0;  // of the last one
};

std::string OneLine(const std::string& text)
{
    std::string line;
    line.reserve(text.size());
    for (const char c : text) {
        if (c == '\n') {
            line += "\\n";
        } else if (c == '\t') {
            line += "\\t";
        } else if (static_cast<unsigned char>(c) < ' ' || c == '\x7f') {
            line += fmt::format("\\x{:02x}", static_cast<unsigned char>(c));
        } else {
            line += c;
        }
    }
    return line;
}

FileHandle OpenFile(const std::string& path, LogFileMode mode)
{
    const int flags = O_WRONLY | O_CREAT | O_APPEND | (mode == LogFileMode::BeginAnew ? O_TRUNC : 0);
    const int descriptor = HostOpen(path, flags);
    if (descriptor < 0 && errno == ENOENT && HostMakeFolders(path.substr(0, path.find_last_of('/'))) == 0) {
        return FileHandle(HostOpen(path, flags));
    }
    return FileHandle(descriptor);
}
}  // namespace

spdlog::sink_ptr OpenLogFile(const std::string& path, LogFileMode mode)
{
    FileHandle file = OpenFile(path, mode);
    return file.IsOpen() ? std::make_shared<WholeLineSink>(std::move(file)) : nullptr;
}

spdlog::sink_ptr OpenStandardErrorLog()
{
    return std::make_shared<WholeLineSink>(FileHandle(fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 0)));
}

void WriteLogLine(spdlog::sinks::sink& sink, spdlog::level::level_enum level, const std::string& text)
{
    const std::string line = OneLine(text);
    sink.log(spdlog::details::log_msg(spdlog::string_view_t(), level, line));
}
