#include <cstdlib>
#include <cstring>
#include <exception>
#include <new>

#include "ZELSH.h"
#include "ZelshCommands.h"
#include "ZelshPrint.h"

namespace Zelsh
{
namespace
{
constexpr int FAILED = 2;
constexpr int UNKNOWN = 1;

/// The arguments of one line. Each is a C string of its own: that is what handlers take.
class Arguments
{
public:
    Arguments() = default;
    ~Arguments()
    {
        for (int i = 0; i < count_; ++i) {
            std::free(texts_[i]);
        }
        std::free(texts_);
    }
    Arguments(const Arguments&) = delete;
    Arguments& operator=(const Arguments&) = delete;

    /// False, with a message, when memory ran out.
    bool Add(const char* start, const char* end);

    int Count() const { return count_; }
    char** Texts() const { return texts_; }

private:
    bool MakeRoom();

    char** texts_ = nullptr;
    int count_ = 0;
    int room_ = 0;
};

bool Arguments::MakeRoom()
{
    if (count_ < room_) {
        return true;
    }
    const int room = room_ == 0 ? 8 : room_ * 2;
    void* texts = std::realloc(texts_, static_cast<std::size_t>(room) * sizeof *texts_);
    if (texts == nullptr) {
        ZELSHError("Failed to resize argument string array");
        return false;
    }
    texts_ = static_cast<char**>(texts);
    room_ = room;
    return true;
}

bool Arguments::Add(const char* start, const char* end)
{
    if (!MakeRoom()) {
        return false;
    }
    char* text = strndup(start, static_cast<std::size_t>(end - start));
    if (text == nullptr) {
        ZELSHError("Failed to allocate argument string");
        return false;
    }
    if (options.verbosity > 9) {
        Trace("Got argument #%d: \"%s\"", count_, text);
    }
    texts_[count_++] = text;
    return true;
}

bool Collect(const char* line, Arguments& arguments)
{
    const char* start = nullptr;
    const char* end = nullptr;
    while ((line = ZELSHParseArgument(line, &start, &end)) != nullptr) {
        if (!arguments.Add(start, end)) {
            return false;
        }
    }
    return true;
}

ORV_ReturnStatus RunHandler(const Command& command, const Call& call)
{
    try {
        return command.handler(call);
    } catch (const std::bad_alloc&) {
        return ORV_NO_MEMORY;
    } catch (const std::exception& error) {
        ZELSHError("%s: %s", command.name, error.what());
        return ORV_FAILURE;
    }
}

bool IsBlank(char byte)
{
    return byte != '\0' && std::strchr(" \t\n\v\f\r", byte) != nullptr;  // in every locale
}
}  // namespace
}  // namespace Zelsh

const char* ZELSHParseArgument(const char* text, const char** start, const char** end)
{
    if (text == nullptr || start == nullptr || end == nullptr) {
        return nullptr;
    }
    while (Zelsh::IsBlank(*text)) {
        ++text;
    }
    if (*text == '\0') {
        return nullptr;
    }
    *start = text;
    while (*text != '\0' && !Zelsh::IsBlank(*text)) {
        const char* closing = *text == '"' ? std::strchr(text + 1, '"') : text;
        if (closing == nullptr) {
            ZELSHError("Invalid argument: \"%s\": unterminated quotation.", *start);
            text += std::strlen(text);
            break;
        }
        text = closing + 1;
    }
    *end = text;
    return text;
}

int ZELSH_ExecCmd(int count, char** arguments)
{
    if (count < 1 || arguments == nullptr) {
        return 0;
    }
    if (options.verbosity > 7) {
        Zelsh::Trace("Looking for %s", arguments[0]);
    }
    const Zelsh::Command* command = Zelsh::FindCommand(arguments[0]);
    if (command == nullptr) {
        ZELSHError("Command not found.");
        return Zelsh::UNKNOWN;
    }
    const ORV_ReturnStatus status = Zelsh::RunHandler(*command, {count, arguments, command->typeLevel});
    if (status != ORV_OK) {
        ZELSHError("Error in command %s: %s", arguments[0], ORV_ReturnStatusToString(status));
        return Zelsh::FAILED;
    }
    return status;
}

int ZELSH_ParseAndExecCmd(const char* line)
{
    if (line == nullptr || *line == '\0' || *line == '#') {
        return 0;
    }
    Zelsh::Arguments arguments;
    if (!Zelsh::Collect(line, arguments)) {
        return Zelsh::FAILED;
    }
    return ZELSH_ExecCmd(arguments.Count(), arguments.Texts());
}
