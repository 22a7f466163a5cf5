#pragma once

#include <gtest/gtest.h>

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "DBStore.h"

/// One row of a query; NULL is no value.
using Row = std::vector<std::optional<std::string>>;

/// One line of /var/log/talvor/events.jsonl.
struct RaisedEvent
{
    std::string kind;  // "observation" or "alert"
    std::string id;    // empty for an alert
    std::string text;
    std::vector<std::string> args;
    bool operator==(const RaisedEvent&) const = default;
};

/// A throwaway host: a root of its own, removed afterwards, with the folders that a booting host has.
/// All paths are logical.
class TestHost
{
public:
    TestHost();
    ~TestHost();
    TestHost(const TestHost&) = delete;
    TestHost& operator=(const TestHost&) = delete;

    const std::string& Root() const { return root_; }
    /// The real path behind a logical one, no links followed.
    std::string Real(const std::string& path) const { return root_ + path; }

    TestHost& WriteFile(const std::string& path, const std::string& content);
    std::string ReadFile(const std::string& path) const;  // empty when absent
    bool Exists(const std::string& path) const;
    void Remove(const std::string& path);
    void MakeFolder(const std::string& path);

    /// Kernel facts; members that are not given keep their defaults (an installed host, no special words).
    struct Kernel
    {
        std::string bootCmdLine = "quiet";
        std::string bootMAC = "";
        std::string bootOption = "00000000";  // four bytes in hexadecimal
        std::string bootFsUUID = "5f0d6f4e-7a64-4c0e-9d6e-0c3a5b1f2a11";
        std::map<std::string, std::vector<std::string>> tardisks = {};
    };
    TestHost& WithKernel(const Kernel& kernel);
    TestHost& WithFeatures(const std::string& json);

    /// Empty stores, as DBStore::CreateDatabases makes them.
    TestHost& WithStores();

    /// Installs a package: a descriptor, an entry of the image profile, and, unless @p schemaData is empty, a schema
    /// file with that "data" whose identifier is NAME-VERSION (a version like 1.0.0_1.0).
    TestHost& WithPackage(const std::string& name, const std::string& version, const std::string& schemaData = "",
                          const std::vector<std::string>& tags = {}, const std::vector<std::string>& payloads = {});

    /// A schema or default-configuration file: {"metadata": …, "data": DATA} under FOLDER/NAME-VERSION.json.
    TestHost& WithSchemaFile(const std::string& name, const std::string& version, const std::string& data);
    TestHost& WithDefaultConfig(const std::string& name, const std::string& version, const std::string& data);

    /// Runs any SQL against a store's file on a connection of its own, outside the library.
    std::vector<Row> Sql(const std::string& sql, DBStore::Type type = DBStore::Type::ConfigStore) const;
    /// First column of the first row; empty when there is none.
    std::string SqlValue(const std::string& sql, DBStore::Type type = DBStore::Type::ConfigStore) const;
    std::string KeyValue(const std::string& key) const;

    /// Log lines, without time and process: "info text", "error text".
    std::vector<std::string> Log() const { return LogLines("/var/log/talvor/configstore.log"); }
    std::vector<std::string> BootLog() const { return LogLines("/var/log/talvor/configstore-boot.log"); }
    std::vector<std::string> Syslog() const { return LogLines("/var/log/talvor/syslog.log"); }
    void ClearLogs();

    std::vector<RaisedEvent> Events() const;
    /// The identifiers of the observation events, and "alert" for alerts.
    std::vector<std::string> EventIds() const;

private:
    std::vector<std::string> LogLines(const std::string& path) const;
    void WriteProfile() const;

    struct Package
    {
        std::string id;
        std::vector<std::string> payloads;
    };
    std::string root_;
    std::vector<Package> packages_;
};

/// A test on a throwaway host.
class HostTest : public ::testing::Test
{
protected:
    TestHost& Host() { return host_; }

private:
    TestHost host_;
};
