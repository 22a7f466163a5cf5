#include "ImageDatabase.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <syslog.h>
#include <unistd.h>

#include <cstring>
#include <stdexcept>
#include <utility>
#include <vector>

#include "HostUtil.h"
#include "NimbBrev.h"

namespace NimbImage
{
namespace
{
const char* const LOCK_FILE = "/var/run/liveimgdb.pid";
const char* const PROFILE_FOLDER = "/var/db/nimbimg/profiles";
const char* const BREV_FOLDER = "/var/db/nimbimg/brevs";
const char* const DUMP_FILE = "/tmp/image-info.csv";

constexpr int LOCK_ATTEMPTS = 3;
constexpr unsigned LOCK_RETRY_SECONDS = 1;

struct FileClose
{
    void operator()(FILE* file) const { fclose(file); }
};
using File = std::unique_ptr<FILE, FileClose>;

struct FolderClose
{
    void operator()(DIR* folder) const { closedir(folder); }
};
using Folder = std::unique_ptr<DIR, FolderClose>;

Folder OpenFolder(const char* path)
{
    return Folder(opendir(HostPath(path).c_str()));
}

bool TakeLock(FILE* file)
{
    for (int attempt = 1; flock(fileno(file), LOCK_EX | LOCK_NB) != 0; ++attempt) {
        if (attempt == LOCK_ATTEMPTS) {
            return false;
        }
        sleep(LOCK_RETRY_SECONDS);
    }
    return true;
}

bool IsDescriptorName(const char* name)
{
    const char* suffix = strrchr(name, '.');
    return name[0] != '.' && suffix != nullptr && strcmp(suffix, ".xml") == 0;
}

void AddPayloads(xmlNodePtr payloads, std::vector<std::string>& names)
{
    for (xmlNodePtr child = payloads->children; child != nullptr; child = child->next) {
        if (IsElement(child, "payload")) {
            names.push_back(TakeXmlText(xmlNodeGetContent(child)));
        }
    }
}

/// What the profile says of one brev: its identifier and payloads.
std::pair<std::string, BrevInfo> ProfileEntry(xmlNodePtr element)
{
    std::pair<std::string, BrevInfo> entry;
    for (xmlNodePtr child = element->children; child != nullptr; child = child->next) {
        if (IsElement(child, "brev-id")) {
            entry.first = TakeXmlText(xmlNodeGetContent(child));
        } else if (IsElement(child, "payloads")) {
            AddPayloads(child, entry.second.payloads);
        }
    }
    return entry;
}

/// A new file in place of whatever stands there: in a world-writable folder that may be a link or a pipe.
File CreateDumpFile()
{
    (void)unlink(HostPathNoFollow(DUMP_FILE).c_str());  // what cannot be removed makes the open fail
    const int descriptor = HostOpen(DUMP_FILE, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, 0666);
    File file(descriptor >= 0 ? fdopen(descriptor, "w") : nullptr);
    if (descriptor >= 0 && file == nullptr) {
        close(descriptor);
    }
    return file;
}

std::string DumpRow(const std::string& id, const BrevInfo& brev)
{
    std::string row = id + "," + brev.name + "," + brev.version + "," + brev.vendor + "," +
                      (brev.restrictStickyFiles ? "1" : "0") + "," + brev.schemaId + ",";
    for (const std::string& payload : brev.payloads) {
        row += payload + "|";
    }
    return row;
}

void WriteLine(FILE* file, const std::string& line)
{
    fprintf(file, "%s\n", line.c_str());
    fflush(file);
}
}  // namespace

NimbImage::NimbImage()
{
    LockImageDB();
    if (lockFile == nullptr) {
        throw std::runtime_error("Failed to lock imageDB.");
    }
    HostSyslog(LOG_INFO, "Nimb imagedb locked.");
    const std::string path = GetImageProfilePath();
    if (path.empty()) {
        throw std::runtime_error("Failed to get image profile path.");
    }
    doc = ParseXmlFile(path);
    if (doc == nullptr) {
        throw std::runtime_error("Failed to parse image profile.");
    }
    xpathCtx = NewXPathContext(doc.get());
    if (xpathCtx == nullptr) {
        throw std::runtime_error("Failed to create xPath context for image profile.");
    }
}

NimbImage::~NimbImage()
{
    xpathCtx.reset();
    doc.reset();
    UnlockImageDB();
}

void NimbImage::LockImageDB()
{
    // Not inherited by the commands that this process runs: they would hold the lock on.
    File file(fopen(HostPath(LOCK_FILE).c_str(), "w+e"));
    if (file == nullptr) {
        HostSyslog(LOG_ERR, "Cannot open imgdb lock file %s", LOCK_FILE);
        return;
    }
    if (!TakeLock(file.get())) {
        HostSyslog(LOG_ERR, "Cannot lock imgdb lock file %s", LOCK_FILE);
        return;
    }
    if (fprintf(file.get(), "%d", static_cast<int>(getpid())) < 0 || fflush(file.get()) != 0) {
        HostSyslog(LOG_ERR, "Cannot write PID in imgdb lock file %s", LOCK_FILE);
    }
    lockFile.reset(file.release());
}

void NimbImage::UnlockImageDB()
{
    lockFile.reset();
}

void NimbImage::LockRelease::operator()(FILE* file) const
{
    flock(fileno(file), LOCK_UN);
    fclose(file);
    HostSyslog(LOG_INFO, "Nimb imagedb unlocked.");
}

std::string NimbImage::GetImageProfilePath()
{
    const Folder folder = OpenFolder(PROFILE_FOLDER);
    if (folder == nullptr) {
        HostSyslog(LOG_ERR, "Cannot open imgdb profiles folder");
        return "";
    }
    while (const dirent* entry = readdir(folder.get())) {
        if (entry->d_type == DT_REG) {
            return std::string(PROFILE_FOLDER) + "/" + entry->d_name;
        }
    }
    HostSyslog(LOG_ERR, "No image profile found");
    return "";
}

void NimbImage::ExecuteXpathExpr(const std::string& expression, const NodeSetHandler& handler)
{
    const XPathResult result = EvaluateXPath(expression, xpathCtx.get());
    handler(*this, result->nodesetval);
}

void NimbImage::GetXmlBrevIdDetails(xmlNodeSetPtr nodes)
{
    for (int i = 0; !IsEmptyNodeSet(nodes) && i < nodes->nodeNr; ++i) {
        brevIds.insert(TakeXmlText(xmlNodeListGetString(doc.get(), nodes->nodeTab[i]->children, 1)));
    }
}

void NimbImage::GetXmlBrevDetails(xmlNodeSetPtr nodes)
{
    if (IsEmptyNodeSet(nodes)) {
        return;
    }
    HostSyslog(LOG_INFO, "Found %d brevs in image profile.", nodes->nodeNr);
    for (int i = 0; i < nodes->nodeNr; ++i) {
        auto [id, brev] = ProfileEntry(nodes->nodeTab[i]);
        brevs[id] = std::move(brev);
    }
}

void NimbImage::GetNimbBrevs()
{
    const Folder folder = OpenFolder(BREV_FOLDER);
    if (folder == nullptr) {
        return;
    }
    while (const dirent* entry = readdir(folder.get())) {
        if (entry->d_type == DT_REG && IsDescriptorName(entry->d_name)) {
            MergeBrev(NimbBrev(std::string(BREV_FOLDER) + "/" + entry->d_name));
        }
    }
}

void NimbImage::MergeBrev(const NimbBrev& brev)
{
    const auto found = brevs.find(brev.Id());
    if (found == brevs.end()) {
        HostSyslog(LOG_ERR, "brev %s not found in image profile", brev.Id().c_str());
        return;
    }
    BrevInfo& info = found->second;
    info.restrictStickyFiles = brev.restrictStickyFiles;
    info.name = brev.name;
    info.version = brev.version;
    info.vendor = brev.vendor;
    info.schemaId = brev.schemaId;
}

std::unordered_map<std::string, BrevInfo> NimbImage::Get()
{
    ExecuteXpathExpr("/imageprofile/brevlist/brev", &NimbImage::GetXmlBrevDetails);
    GetNimbBrevs();
    return brevs;
}

std::unordered_set<std::string> NimbImage::GetBrevIds()
{
    ExecuteXpathExpr("/imageprofile/brevlist/brev/brev-id", &NimbImage::GetXmlBrevIdDetails);
    return brevIds;
}

void NimbImage::Dump()
{
    Get();
    const File file = CreateDumpFile();
    if (file == nullptr) {
        return;
    }
    WriteLine(file.get(), "brevId,Name,Version,Vendor,RestrictStickyFiles,schemaId,tardisks,");
    for (const auto& [id, brev] : brevs) {
        WriteLine(file.get(), DumpRow(id, brev));
    }
}

std::unordered_map<std::string, BrevInfo> GetNimbImage()
{
    return NimbImage().Get();
}

std::unordered_set<std::string> GetBrevIds()
{
    return NimbImage().GetBrevIds();
}

void Dump()
{
    NimbImage().Dump();
}

std::unordered_set<std::string> GetSchemaIds()
{
    std::unordered_set<std::string> ids;
    for (const auto& [id, brev] : GetNimbImage()) {
        if (!brev.schemaId.empty()) {
            ids.insert(brev.schemaId);
        }
    }
    return ids;
}
}  // namespace NimbImage
