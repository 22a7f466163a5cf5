#pragma once

#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#pragma GCC visibility push(default)

/// The host's image database: what software is installed. Every call takes the database's lock
/// ("/var/run/liveimgdb.pid") for its length, waits at most about two seconds for it, reads the database anew and
/// throws std::runtime_error (for an unreadable descriptor a plain std::exception) when it cannot; no partial
/// answer is returned.
namespace NimbImage
{
/// One installed brev.
struct BrevInfo
{
    std::string name;                   ///< as its descriptor says, like the next two
    std::string version;                ///< e.g. "1.6.0_1.0"
    std::string vendor;                 ///< first part of the identifier
    bool restrictStickyFiles = false;   ///< changed files that it delivered do not persist
    std::string schemaId;               ///< of the configuration schema that it ships; empty when it ships none
    std::vector<std::string> payloads;  ///< names of the tardisks that carry its files, in profile order
};

/// Every brev of the image profile by its identifier (vendor "_" type "_" name "_" version). A brev without a
/// descriptor has its payloads only.
std::unordered_map<std::string, BrevInfo> GetNimbImage();

/// The identifiers alone; descriptors are not read.
std::unordered_set<std::string> GetBrevIds();

/// The schema identifiers that the installed brevs declare.
std::unordered_set<std::string> GetSchemaIds();

/// Writes the whole map to "/tmp/image-info.csv", replacing it. A file that cannot be written is not reported.
void Dump();
}  // namespace NimbImage

#pragma GCC visibility pop
