#pragma once

#include <gmock/gmock.h>

#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "ConfigStoreDocument.h"
#include "GoldenFile.h"
#include "Program.h"
#include "TestHost.h"

/// What one call of the program left behind.
struct Ran
{
    int status = -1;
    std::string output;
    std::string errors;
};

/// Runs commands in this process on a throwaway host.
class CommandTest : public HostTest
{
protected:
    using Words = std::vector<std::string>;

    Ran Run(const Words& words)
    {
        std::ostringstream output;
        std::ostringstream errors;
        std::istringstream input(input_);
        std::streambuf* const before = std::cin.rdbuf(input.rdbuf());
        Ran ran;
        ran.status = ConfigStoreCtl::RunProgram(words, output, errors, {});
        std::cin.rdbuf(before);
        ran.output = Rootless(output.str());
        ran.errors = Rootless(errors.str());
        return ran;
    }

    /// What every later call reads from its standard input.
    void Input(const std::string& text) { input_ = text; }

    /// The command succeeds, and prints tests/apps/golden/NAME.txt, or NAME.json with --json.
    void ExpectGolden(const std::string& name, const Words& words, int status = 0)
    {
        const Ran text = Run(words);
        EXPECT_EQ(text.status, status) << text.errors;
        ExpectFile(name + ".txt", text.output);
        Words jsonWords = words;
        jsonWords.insert(jsonWords.begin(), "--json");
        const Ran json = Run(jsonWords);
        EXPECT_EQ(json.status, status) << json.errors;
        ExpectFile(name + ".json", json.output);
        NimbConfigStore::JsonDocument document;
        EXPECT_TRUE(ConfigStoreDocument::ParseText(json.output, document)) << json.output;
    }

    /// The command fails with one message and prints nothing else.
    void ExpectFailure(const Words& words, const std::string& message, int status = 1)
    {
        const Ran ran = Run(words);
        EXPECT_EQ(ran.status, status);
        EXPECT_EQ(ran.output, "");
        EXPECT_EQ(ran.errors, "configstorectl: " + message + "\n");
    }

    /// @p text is tests/apps/golden/NAME.
    static void ExpectFile(const std::string& name, const std::string& text)
    {
        ExpectGoldenFile("apps/golden/" + name, text);
    }

    /// A handful of rows in every table that commands list.
    void FillStores()
    {
        Host().WithStores();
        Host().Sql(
            "INSERT INTO Config (Component, ConfigGroup, Name, Identifier, Version, CreationTime, Revision, Success, "
            "UserValue, VitalValue, CachedValue, AutoConfValue, DesiredValue) VALUES "
            "('nimb','network','dns','','1.0.0','2026-01-02 03:04:05',2,1,'{\"servers\":[\"10.0.0.1\"]}',NULL,NULL,"
            "'{\"domain\":\"lab\"}',NULL),"
            "('nimb','network','portgroups','mgmt','2.1.0','2026-01-02 03:04:06',1,0,'{\"vlan\":7}',"
            "'{\"uuid\":\"a\"}','{\"ports\":4}',NULL,NULL),"
            "('nimb','network','portgroups','vm/net','2.1.0','2026-01-02 03:04:07',1,1,'{\"vlan\":8}',NULL,NULL,NULL,"
            "'{\"vlan\":9}'),"
            "('nimb','time','ntp',NULL,NULL,NULL,NULL,NULL,'mark for deletion',NULL,NULL,NULL,NULL)");
        Host().Sql(
            "INSERT INTO DefaultConfig (Component, ConfigGroup, Name, Identifier, Version, Value, VitalValue, "
            "CachedValue) VALUES ('nimb','network','dns','','1.0.0','{\"servers\":[]}',NULL,'{\"seen\":true}'),"
            "('nimb','time','ntp','','1.0.0','{\"enabled\":false}',NULL,NULL)");
        Host().Sql(
            "INSERT INTO DesiredUserConfig (Component, ConfigGroup, Name, Identifier, Version, BootAction, Value, "
            "VitalValue, CachedValue) VALUES ('nimb','network','dns','','1.0.0','SET','{\"servers\":[\"10.0.0.2\"]}',"
            "NULL,NULL),('nimb','time','ntp','',NULL,'SET_DEFAULT',NULL,NULL,NULL)");
    }

private:
    std::string input_;

    std::string Rootless(std::string text)
    {
        for (std::size_t at = text.find(Host().Root()); at != std::string::npos; at = text.find(Host().Root())) {
            text.replace(at, Host().Root().size(), "ROOT");
        }
        return text;
    }
};
