// Configuration upgrade of the sample host from release 3.2 to 3.3.
//
// A module sees the stores as the boot has restored them, with the new release's schemas already registered, and
// brings what older releases wrote into the new shape. It must be ready to run twice: a host may lose power during
// the boot and start again.
#include <sqlite3.h>

#include <cstdio>
#include <memory>
#include <string>

#include "NimbConfigUpgrade.h"

namespace
{
const int WAIT_LIMIT_MS = 3000;
const char* const DATAFILE_STORE = "/etc/talvor/configstore/datafile-store";

/// time-sync 2.0.0 describes each time server by an object and keeps the drift file's place to itself.
/// Rows in the new shape do not match.
const char* const MIGRATE_TIME_SERVERS = R"(
    UPDATE Config SET
        UserValue = json_remove(json_set(UserValue, '$.servers',
            (SELECT json_group_array(json_object('address', value, 'iburst', json('true')))
             FROM json_each(Config.UserValue, '$.servers'))), '$.driftFile'),
        Version = '2.0.0_1.0'
    WHERE Component = 'nimb' AND ConfigGroup = 'time' AND Name = 'ntp'
      AND json_type(UserValue, '$.servers[0]') = 'text')";

/// health-agent 2.3.0 keeps its baseline as a data file of the store; before, it lay there without a record.
const char* const REGISTER_HEALTH_BASELINE = R"(
    INSERT INTO DataFileMetadata (Component, KEY, DirName, FileName)
    SELECT 'health-agent', 'baseline', 'health-agent', 'baseline.csv'
    WHERE NOT EXISTS (SELECT 1 FROM DataFileMetadata WHERE DirName = 'health-agent' AND FileName = 'baseline.csv'))";

struct CloseDatabase
{
    void operator()(sqlite3* database) const { sqlite3_close(database); }
};

/// Runs one statement on the store in @p file, which must be there. One statement is one transaction.
bool Change(const std::string& file, const char* sql)
{
    sqlite3* opened = nullptr;
    const int result = sqlite3_open_v2(file.c_str(), &opened, SQLITE_OPEN_READWRITE, nullptr);
    const std::unique_ptr<sqlite3, CloseDatabase> database(opened);
    if (result == SQLITE_OK) {
        sqlite3_busy_timeout(database.get(), WAIT_LIMIT_MS);
        if (sqlite3_exec(database.get(), sql, nullptr, nullptr, nullptr) == SQLITE_OK) {
            return true;
        }
    }
    std::fprintf(stderr, "host-3.3-upgrade: %s: %s\n", file.c_str(), sqlite3_errmsg(database.get()));
    return false;
}
}  // namespace

extern "C" __attribute__((visibility("default"))) int ConfigUpgrade_Run(const ConfigUpgradeContext* context)
{
    if (context->version != 1) {
        return 1;  // a host that speaks another version of this interface
    }
    const bool servers = Change(context->storePath, MIGRATE_TIME_SERVERS);
    const bool baseline = Change(context->hostRoot + std::string(DATAFILE_STORE), REGISTER_HEALTH_BASELINE);
    return servers && baseline ? 0 : 1;
}
