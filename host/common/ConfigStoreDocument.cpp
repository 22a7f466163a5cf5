#include "ConfigStoreDocument.h"

#include <fmt/format.h>
#include <rapidjson/error/en.h>
#include <rapidjson/filereadstream.h>
#include <rapidjson/memorystream.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

#include "HostUtil.h"

using NimbConfigStore::JsonDocument;
using NimbConfigStore::JsonValue;

namespace
{
constexpr std::size_t READ_BUFFER_BYTES = 65536;

// Passes the parser's events on to the document until the nesting gets too deep.
class DepthLimit
{
public:
    using Ch = char;

    explicit DepthLimit(JsonDocument& document) : document_(document) {}

    bool Null() { return document_.Null(); }
    bool Bool(bool value) { return document_.Bool(value); }
    bool Int(int value) { return document_.Int(value); }
    bool Uint(unsigned value) { return document_.Uint(value); }
    bool Int64(std::int64_t value) { return document_.Int64(value); }
    bool Uint64(std::uint64_t value) { return document_.Uint64(value); }
    bool Double(double value) { return document_.Double(value); }
    bool RawNumber(const Ch* text, rapidjson::SizeType size, bool copy)
    {
        return document_.RawNumber(text, size, copy);
    }
    bool String(const Ch* text, rapidjson::SizeType size, bool copy) { return document_.String(text, size, copy); }
    bool Key(const Ch* text, rapidjson::SizeType size, bool copy) { return document_.Key(text, size, copy); }
    bool StartObject() { return Enter() && document_.StartObject(); }
    bool StartArray() { return Enter() && document_.StartArray(); }
    bool EndObject(rapidjson::SizeType members) { return Leave() && document_.EndObject(members); }
    bool EndArray(rapidjson::SizeType elements) { return Leave() && document_.EndArray(elements); }

private:
    bool Enter() { return ++depth_ <= ConfigStoreDocument::MAX_DEPTH; }
    bool Leave() { return depth_-- > 0; }

    JsonDocument& document_;
    unsigned depth_ = 0;
};

std::string Describe(const rapidjson::ParseResult& result)
{
    if (result.Code() == rapidjson::kParseErrorTermination) {
        return fmt::format("Nested more than {} levels deep, at byte {}.", ConfigStoreDocument::MAX_DEPTH,
                           result.Offset());
    }
    std::string reason = rapidjson::GetParseError_En(result.Code());
    reason.pop_back();  // its full stop
    return fmt::format("{}, at byte {}.", reason, result.Offset());
}

// Iterative: the depth of the text must not become depth of the stack.
template <typename Stream>
rapidjson::ParseResult ParseStream(Stream& stream, JsonDocument& document)
{
    rapidjson::Reader reader;
    rapidjson::ParseResult result;
    auto generate = [&](JsonDocument& target) {
        DepthLimit limited(target);
        result = reader.Parse<rapidjson::kParseDefaultFlags | rapidjson::kParseIterativeFlag>(stream, limited);
        return !result.IsError();
    };
    document.SetNull();
    document.Populate(generate);
    return result;
}

bool Accepted(const rapidjson::ParseResult& result, std::string* reason)
{
    if (result.IsError() && reason != nullptr) {
        *reason = Describe(result);
    }
    return !result.IsError();
}

bool Refuse(int error, std::string* reason)
{
    if (reason != nullptr) {
        *reason = error == EINVAL ? "Not a regular file" : std::strerror(error);
    }
    return false;
}

using FilePtr = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

// Null and errno on failure, EINVAL for what is neither a file nor a folder.
FilePtr OpenForReading(const std::string& path)
{
    const int descriptor = HostOpenRegular(path);
    FilePtr file(descriptor < 0 ? nullptr : fdopen(descriptor, "rb"), std::fclose);
    if (descriptor >= 0 && file == nullptr) {
        close(descriptor);
        errno = ENOMEM;
    }
    return file;
}
}  // namespace

namespace ConfigStoreDocument
{
bool ValueExists(const JsonValue& value, const char* name)
{
    return name != nullptr && value.IsObject() && value.HasMember(name);
}

void SerializeValue(const JsonValue& value, std::string& out)
{
    rapidjson::StringBuffer text;
    rapidjson::Writer<rapidjson::StringBuffer> writer(text);
    const bool written = value.Accept(writer);
    RAPIDJSON_ASSERT(written);  // JSON has no infinite numbers
    out.assign(text.GetString(), text.GetSize());
}

bool ParseText(std::string_view text, JsonDocument& document, std::string* reason)
{
    rapidjson::MemoryStream stream(text.data(), text.size());
    return Accepted(ParseStream(stream, document), reason);
}

bool ParseFile(const std::string& path, JsonDocument& document, std::string* reason)
{
    document.SetNull();
    const FilePtr file = OpenForReading(path);
    if (file == nullptr) {
        return Refuse(errno, reason);
    }
    const auto buffer = std::make_unique_for_overwrite<char[]>(READ_BUFFER_BYTES);
    errno = 0;
    rapidjson::FileReadStream stream(file.get(), buffer.get(), READ_BUFFER_BYTES);
    const rapidjson::ParseResult result = ParseStream(stream, document);
    if (std::ferror(file.get()) != 0) {
        document.SetNull();
        return Refuse(errno, reason);
    }
    return Accepted(result, reason);
}
}  // namespace ConfigStoreDocument
