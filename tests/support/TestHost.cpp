#include "TestHost.h"

#include <sqlite3.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include "HostUtil.h"
#include "Json.h"

namespace fs = std::filesystem;

namespace
{
const char* const FOLDERS[] = {
    "/etc/talvor/configstore",
    "/etc/talvor/default-config",
    "/etc/talvor/platform",
    "/tmp",
    "/usr/lib/talvor/configmanager/schemas",
    "/usr/lib/talvor/configmanager/upgrade/lib",
    "/var/cache/datafiles",
    "/var/db/nimbimg/brevs",
    "/var/db/nimbimg/profiles",
    "/var/lib/talvor/configstore/backup",
    "/var/lib/talvor/configstore/firstbootBackup",
    "/var/lib/talvor/firstboot",
    "/var/log/talvor",
    "/var/run/talvor/files",
};

/// Memory where there is plenty of it, unless TMPDIR says otherwise: a store waits for the disk at every commit.
fs::path ScratchFolder()
{
    constexpr std::uintmax_t PLENTY = 1ULL << 30;
    const fs::path memory = "/dev/shm";
    std::error_code reason;
    const fs::space_info space = fs::space(memory, reason);
    return std::getenv("TMPDIR") == nullptr && !reason && space.available >= PLENTY ? memory
                                                                                    : fs::path(::testing::TempDir());
}

std::string NewRoot()
{
    std::string name = (ScratchFolder() / "test host XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) {
        throw std::runtime_error("cannot create " + name);
    }
    return name;
}

std::string Quoted(const std::string& text)
{
    std::string quoted = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') {
            quoted += '\\';
        }
        quoted += c;
    }
    return quoted + "\"";
}

std::string JsonArray(const std::vector<std::string>& texts)
{
    std::string array = "[";
    for (const std::string& text : texts) {
        array += (array.size() > 1 ? "," : "") + Quoted(text);
    }
    return array + "]";
}

std::string FileWithMetadata(const std::string& name, const std::string& version, const std::string& data)
{
    return R"({"metadata": {"brevname": )" + Quoted(name) + R"(, "brevversion": )" + Quoted(version) +
           R"(}, "data": )" + data + "}";
}
}  // namespace

TestHost::TestHost() : root_(NewRoot())
{
    for (const char* folder : FOLDERS) {
        MakeFolder(folder);
    }
    SetHostRoot(root_);
    WithKernel({});
}

TestHost::~TestHost()
{
    SetHostRoot("/");
    std::error_code ignored;
    fs::remove_all(root_, ignored);
}

TestHost& TestHost::WriteFile(const std::string& path, const std::string& content)
{
    fs::create_directories(fs::path(Real(path)).parent_path());
    std::ofstream(Real(path), std::ios::binary) << content;
    return *this;
}

std::string TestHost::ReadFile(const std::string& path) const
{
    std::ostringstream text;
    text << std::ifstream(Real(path), std::ios::binary).rdbuf();
    return text.str();
}

bool TestHost::Exists(const std::string& path) const
{
    return fs::exists(fs::symlink_status(Real(path)));
}

void TestHost::Remove(const std::string& path)
{
    fs::remove_all(Real(path));
}

void TestHost::MakeFolder(const std::string& path)
{
    fs::create_directories(Real(path));
}

TestHost& TestHost::WithKernel(const Kernel& kernel)
{
    std::string tardisks;
    for (const auto& [name, files] : kernel.tardisks) {
        tardisks += (tardisks.empty() ? "" : ",") + Quoted(name) + ":" + JsonArray(files);
    }
    return WriteFile("/etc/talvor/platform/kernel.json",
                     R"({"bootCmdLine":)" + Quoted(kernel.bootCmdLine) + R"(,"bootMAC":)" + Quoted(kernel.bootMAC) +
                         R"(,"bootOption":)" + Quoted(kernel.bootOption) + R"(,"bootFsUUID":)" +
                         Quoted(kernel.bootFsUUID) + R"(,"tardisks":{)" + tardisks + "}}");
}

TestHost& TestHost::WithFeatures(const std::string& json)
{
    return WriteFile("/etc/talvor/platform/features.json", json);
}

TestHost& TestHost::WithStores()
{
    EXPECT_EQ(DBStore::CreateDatabases(), DBStore::SUCCESS);
    return *this;
}

TestHost& TestHost::WithPackage(const std::string& name, const std::string& version, const std::string& schemaData,
                                const std::vector<std::string>& tags, const std::vector<std::string>& payloads)
{
    const std::string id = "Talvor_bootbank_" + name + "_" + version;
    std::string tagElements;
    for (const std::string& tag : tags) {
        tagElements += "<tag>" + tag + "</tag>";
    }
    if (!schemaData.empty()) {
        tagElements += "<tag>ConfigSchema:" + name + "-" + version + ":schema</tag>";
        WithSchemaFile(name, version, schemaData);
    }
    WriteFile("/var/db/nimbimg/brevs/" + id + ".xml", "<brev><type>bootbank</type><name>" + name + "</name><version>" +
                                                          version + "</version><vendor>Talvor</vendor><software-tags>" +
                                                          tagElements + "</software-tags></brev>");
    packages_.push_back({id, payloads});
    WriteProfile();
    return *this;
}

void TestHost::WriteProfile() const
{
    std::string brevs;
    for (const Package& package : packages_) {
        brevs += "<brev><brev-id>" + package.id + "</brev-id><payloads>";
        for (const std::string& payload : package.payloads) {
            brevs += "<payload>" + payload + "</payload>";
        }
        brevs += "</payloads></brev>";
    }
    std::ofstream(Real("/var/db/nimbimg/profiles/profile"))
        << "<imageprofile><brevlist>" << brevs << "</brevlist></imageprofile>";
}

TestHost& TestHost::WithSchemaFile(const std::string& name, const std::string& version, const std::string& data)
{
    return WriteFile("/usr/lib/talvor/configmanager/schemas/" + name + "-" + version + ".json",
                     FileWithMetadata(name, version, data));
}

TestHost& TestHost::WithDefaultConfig(const std::string& name, const std::string& version, const std::string& data)
{
    return WriteFile("/etc/talvor/default-config/" + name + "-" + version + ".json",
                     FileWithMetadata(name, version, data));
}

std::vector<Row> TestHost::Sql(const std::string& sql, DBStore::Type type) const
{
    sqlite3* database = nullptr;
    const std::string file = Real(DBStore::StorePath(type));
    if (sqlite3_open_v2(file.c_str(), &database, SQLITE_OPEN_READWRITE, nullptr) != SQLITE_OK) {
        sqlite3_close(database);
        throw std::runtime_error("cannot open " + file);
    }
    std::vector<Row> rows;
    char* reason = nullptr;
    const int result = sqlite3_exec(
        database, sql.c_str(),
        [](void* context, int columns, char** values, char**) {
            Row& row = static_cast<std::vector<Row>*>(context)->emplace_back();
            for (int i = 0; i < columns; ++i) {
                row.push_back(values[i] != nullptr ? std::optional<std::string>(values[i]) : std::nullopt);
            }
            return 0;
        },
        &rows, &reason);
    const std::string why = reason != nullptr ? reason : "";
    sqlite3_free(reason);
    sqlite3_close(database);
    if (result != SQLITE_OK) {
        throw std::runtime_error(sql + ": " + why);
    }
    return rows;
}

std::string TestHost::SqlValue(const std::string& sql, DBStore::Type type) const
{
    const std::vector<Row> rows = Sql(sql, type);
    return rows.empty() || rows[0].empty() ? "" : rows[0][0].value_or("");
}

std::string TestHost::KeyValue(const std::string& key) const
{
    return SqlValue("SELECT Value FROM KeyValue WHERE Key = '" + key + "'");
}

void TestHost::ClearLogs()
{
    for (const char* name : {"configstore.log", "configstore-boot.log", "syslog.log", "events.jsonl"}) {
        const std::string path = std::string("/var/log/talvor/") + name;
        if (Exists(path)) {
            fs::resize_file(Real(path), 0);
        }
    }
}

std::vector<std::string> TestHost::LogLines(const std::string& path) const
{
    std::vector<std::string> lines;
    std::istringstream text(ReadFile(path));
    for (std::string line; std::getline(text, line);) {
        // "TIME LEVEL [PID] TEXT" becomes "LEVEL TEXT".
        const std::size_t level = line.find(' ') + 1;
        const std::size_t process = line.find(' ', level) + 1;
        const std::size_t rest = line.find(' ', process) + 1;
        lines.push_back(line.substr(level, process - level) + line.substr(rest));
    }
    return lines;
}

std::vector<RaisedEvent> TestHost::Events() const
{
    std::vector<RaisedEvent> events;
    std::istringstream text(ReadFile("/var/log/talvor/events.jsonl"));
    for (std::string line; std::getline(text, line);) {
        NimbConfigStore::JsonDocument event;
        event.Parse(line.c_str());
        RaisedEvent& raised = events.emplace_back();
        raised.kind = event["kind"].GetString();
        raised.id = event["id"].GetString();
        raised.text = event["text"].GetString();
        for (const auto& argument : event["args"].GetArray()) {
            raised.args.emplace_back(argument.GetString());
        }
    }
    return events;
}

std::vector<std::string> TestHost::EventIds() const
{
    std::vector<std::string> ids;
    for (const RaisedEvent& event : Events()) {
        ids.push_back(event.kind == "alert" ? event.kind : event.id);
    }
    return ids;
}
