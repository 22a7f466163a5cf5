#include <fcntl.h>
#include <unistd.h>
#include <cerrno>
#include <cstring>
#include <map>
#include <set>

#include "Commands.h"
#include "HostUtil.h"
#include "NimbImage.h"

namespace ConfigStoreCtl
{
namespace
{
constexpr const char* DUMP_FILE = "/tmp/image-info.csv";

void ListInOrder(const Column& column, const std::unordered_set<std::string>& texts, Output& output)
{
    Listing listing{{column}, {}};
    for (const std::string& text : std::set(texts.begin(), texts.end())) {
        listing.rows.push_back({text});
    }
    output.Table(listing);
}
}  // namespace

void ImageList(const Arguments&, Output& output)
{
    Listing listing{{{"BREV", "id"},
                     {"NAME", "name"},
                     {"VERSION", "version"},
                     {"VENDOR", "vendor"},
                     {"SCHEMA", "schemaId"},
                     {"RESTRICTS", "restrictStickyFiles"},
                     {"PAYLOADS", "payloads"}},
                    {}};
    const auto image = NimbImage::GetNimbImage();
    for (const auto& [id, brev] : std::map(image.begin(), image.end())) {
        listing.rows.push_back(
            {id, brev.name, brev.version, brev.vendor, brev.schemaId, brev.restrictStickyFiles, brev.payloads});
    }
    output.Table(listing);
}

void ImageIds(const Arguments&, Output& output)
{
    ListInOrder({"BREV", "id"}, NimbImage::GetBrevIds(), output);
}

void ImageSchemaIds(const Arguments&, Output& output)
{
    ListInOrder({"SCHEMA", "schemaId"}, NimbImage::GetSchemaIds(), output);
}

void ImageDump(const Arguments&, Output& output)
{
    NimbImage::Dump();
    // The call does not say when the file cannot be written.
    const int file = HostOpen(DUMP_FILE, O_WRONLY);
    if (file == -1) {
        throw CommandFailure(DUMP_FILE, std::string("cannot be written: ") + std::strerror(errno));
    }
    close(file);
    output.Record({{{"file", "file"}}, {{DUMP_FILE}}});
}
}  // namespace ConfigStoreCtl
