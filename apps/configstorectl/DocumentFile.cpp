#include "DocumentFile.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iostream>
#include <iterator>

#include "ConfigStoreDocument.h"
#include "NimbConfigStore.h"
#include "Output.h"

namespace ConfigStoreCtl
{
namespace
{
std::string ReadDocument(const std::string& file)
{
    std::ifstream opened;
    if (file != "-") {
        errno = 0;
        opened.open(file, std::ios::binary);
    }
    std::istream& stream = file == "-" ? std::cin : opened;
    std::string text;
    if (stream && stream.peek() != std::istream::traits_type::eof()) {
        text.assign(std::istreambuf_iterator<char>(stream), {});
    }
    if (stream.bad() || (file != "-" && !opened.is_open())) {
        throw CommandFailure(file, std::string("cannot be read: ") + std::strerror(errno));
    }
    return text;
}
}  // namespace

void ParseDocument(const std::string& file, NimbConfigStore::JsonDocument& document)
{
    const std::string text = ReadDocument(file);
    try {
        document.CopyFrom(*NimbConfigStore::CreateDocumentFromString(text)->document, document.GetAllocator());
    } catch (const NimbConfigStore::ConfigStoreException&) {
        std::string reason;  // which that call does not tell
        (void)ConfigStoreDocument::ParseText(text, document, &reason);
        throw CommandFailure(file, "is not a JSON document: " + reason);
    }
}
}  // namespace ConfigStoreCtl
