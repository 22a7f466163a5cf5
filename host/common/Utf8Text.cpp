#include "Utf8Text.h"

#include <rapidjson/encodings.h>
#include <rapidjson/memorystream.h>
#include <rapidjson/stringbuffer.h>

std::string ValidUtf8(const std::string& text)
{
    std::string valid;
    rapidjson::MemoryStream stream(text.data(), text.size());
    while (stream.Tell() < text.size()) {
        const std::size_t start = stream.Tell();
        unsigned codepoint = 0;
        if (rapidjson::UTF8<>::Decode(stream, &codepoint)) {
            valid.append(text, start, stream.Tell() - start);
        } else {
            valid += '?';
        }
    }
    return valid;
}
