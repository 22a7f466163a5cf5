#include <fcntl.h>
#include <unistd.h>
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <map>

#include "Commands.h"
#include "HostUtil.h"
#include "NimbImage.h"

namespace ConfigStoreCtl
{
namespace
{
constexpr const char* DUMP_FILE = "/tmp/image-info.csv";
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

void ImageSchemaIds(const Arguments&, Output& output)
{
    const auto found = NimbImage::GetSchemaIds();
    std::vector<std::string> ids(found.begin(), found.end());
    std::sort(ids.begin(), ids.end());
    Listing listing{{{"SCHEMA", "schemaId"}}, {}};
    for (const std::string& id : ids) {
        listing.rows.push_back({id});
    }
    output.Table(listing);
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
