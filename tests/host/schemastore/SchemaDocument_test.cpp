#include <gmock/gmock.h>

#include <set>
#include <string>

#include "ConfigStoreDocument.h"
#include "JsonValidator.h"
#include "NimbSchemaStore.h"
#include "TestHost.h"

using namespace NimbSchemaStore;
using NimbConfigStore::JsonDocument;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

namespace
{
const char* const DNS = R"({"component": "nimb", "group": "net/work", "key": "d~n s", "mutableDefaultConfig": true,
    "schema": {"type": "object", "properties": {"server": {"$ref": "#/definitions/address"}},
    "additionalProperties": false, "definitions": {"address": {"$ref": "#/definitions/text"},
    "text": {"type": "string"}}}})";

const char* const USERS = R"({"component": "nimb", "group": "auth", "key": "users", "singleton": false,
    "schema": {"type": "object", "required": ["login"], "properties": {"login": {"type": "string", "instanceId": true},
    "alias": {"$ref": "#/properties/login"}, "note": {"const": {"$ref": "#/kept"}}}}})";

class SchemaDocumentTest : public HostTest
{
protected:
    SchemaDocumentTest()
    {
        Host().WithStores();
        const SchemaStorePtr run = SchemaStore::GetStore(true);
        SetSchema("net-1.0.0_1.0", "nimb", "net/work", "d~n s", DNS, run, false);
        SetSchema("net-1.0.0_1.0", "nimb", "auth", "users", USERS, run, false);
        RemoveUndeclaredSchemas({}, run);
        cache_ = SchemaStore::GetStore(false)->GetCache();
    }

    /// Each finding as "FIELD: ERROR", under the rules that whole documents are checked with.
    std::vector<std::string> FindingsOf(const std::string& text) const
    {
        JsonDocument desired;
        EXPECT_TRUE(ConfigStoreDocument::ParseText(text, desired));
        JsonDocument schema;
        JsonDocument scratch;
        GenerateSchemaDocument(desired, cache_, schema, scratch);
        EXPECT_EQ(JsonValidator::CheckSchema(schema), "");
        JsonDocument report;
        JsonValidator::Validate(schema, desired, report, {0, 1, 3, 7, 8}, "");
        std::vector<std::string> findings;
        for (const auto& finding : report.GetArray()) {
            findings.push_back(std::string(finding["field"].GetString()) + ": " + finding["error"].GetString());
        }
        return findings;
    }

    SchemaObjectCachePtr cache_;
};

/// @p text with its star replaced.
std::string Filled(std::string text, const std::string& filling)
{
    return text.replace(text.find('*'), 1, filling);
}
}  // namespace

TEST_F(SchemaDocumentTest, ADocumentOfKnownObjectsThatKeepToTheirSchemasHasNoFinding)
{
    EXPECT_THAT(FindingsOf(R"({"nimb": {"net/work": {"d~n s": {"server": "10.0.0.1"}},
        "auth": {"users": [{"login": "a", "alias": "b", "note": {"$ref": "#/kept"}}, {"login": "c"}]}}})"),
                IsEmpty());
    EXPECT_THAT(FindingsOf("{}"), IsEmpty());
}

TEST_F(SchemaDocumentTest, ReferencesOfEachObjectStillLeadToItsOwnDefinitions)
{
    EXPECT_THAT(FindingsOf(R"({"nimb": {"net/work": {"d~n s": {"server": 1}},
        "auth": {"users": [{"login": "a", "alias": 2}, {}]}}})"),
                ElementsAre("/nimb/net~1work/d~0n s/server: expected the type string, found 1",
                            "/nimb/auth/users/0/alias: expected the type string, found 2",
                            "/nimb/auth/users/1: expected the member \"login\", found an object of 0 members"));
}

TEST_F(SchemaDocumentTest, AnUnknownNameIsAFindingAtTheLevelWhereItIsUnknown)
{
    EXPECT_THAT(FindingsOf(R"({"other": {}, "nimb": {"storage": {"x": 1}, "auth": {"roles": []}}})"),
                ElementsAre("/other: expected no such member, found an object of 0 members",
                            "/nimb/storage: expected no such member, found an object of 1 member",
                            "/nimb/auth/roles: expected no such member, found an array of 0 elements"));
}

TEST_F(SchemaDocumentTest, OnlyAMutableDefaultMayBeDeleted)
{
    EXPECT_THAT(FindingsOf(R"({"nimb": {"net/work": {"d~n s": "DELETE_DEFAULT"}}})"), IsEmpty());
    EXPECT_THAT(FindingsOf(R"({"nimb": {"net/work": {"d~n s": "delete"}}})"),
                ElementsAre("/nimb/net~1work/d~0n s: expected the type object; or expected \"DELETE_DEFAULT\", found "
                            "\"delete\""));
    EXPECT_THAT(FindingsOf(R"({"nimb": {"auth": {"users": "DELETE_DEFAULT"}}})"),
                ElementsAre("/nimb/auth/users: expected the type array, found \"DELETE_DEFAULT\""));
}

TEST_F(SchemaDocumentTest, AProfileIsDescendedIntoAndItsSiblingsAreNotRead)
{
    EXPECT_THAT(FindingsOf(R"({"profile": {"nimb": {"auth": {"users": [{"login": 5}]}}}, "metadata": {"by": 1}})"),
                ElementsAre("/profile/nimb/auth/users/0/login: expected the type string, found 5"));
    EXPECT_THAT(FindingsOf(R"({"profile": []})"),
                ElementsAre("/profile: expected the type object, found an array of 0 elements"));
}

TEST_F(SchemaDocumentTest, EveryLevelMustBeAnObject)
{
    for (const char* text : {"[]", "5", R"({"nimb": []})", R"({"nimb": {"auth": 1}})"}) {
        EXPECT_EQ(FindingsOf(text).size(), 1u) << text;
    }
}

TEST_F(SchemaDocumentTest, WhereANameStandsTwiceBothPartsAreChecked)
{
    const std::string users = R"("auth": {"users": [{"login": "a"}]})";
    const std::string badUsers = R"("auth": {"users": [{"login": 5}]})";
    const std::string users2 = R"("users": [{"login": "b"}])";
    const char* const finding = "/nimb/auth/users/0/login: expected the type string, found 5";
    for (const std::string& twice :
         {R"({"nimb": {*}, "nimb": {)" + users + "}}", R"({"nimb": {)" + users + R"(}, "nimb": {*}})",
          R"({"nimb": {*, )" + users + "}}", R"({"nimb": {)" + users + ", *}}"}) {
        EXPECT_THAT(FindingsOf(Filled(twice, users)), IsEmpty()) << twice;
        EXPECT_THAT(FindingsOf(Filled(twice, badUsers)), ElementsAre(finding)) << twice;
    }
    for (const std::string& twice :
         {R"({"nimb": {"auth": {*, )" + users2 + "}}}", R"({"nimb": {"auth": {)" + users2 + ", *}}}",
          R"({"profile": {"nimb": {"auth": {*, )" + users2 + "}}}}"}) {
        EXPECT_THAT(FindingsOf(Filled(twice, R"("users": [])")), IsEmpty()) << twice;
        EXPECT_THAT(FindingsOf(Filled(twice, R"("users": [{"login": 5}])")), SizeIs(1)) << twice;
    }
    EXPECT_THAT(FindingsOf(R"({"nimb": {"auth": {}}, "nimb": {"net/work": {}, "auth": 7}})"),
                ElementsAre("/nimb/auth: expected the type object, found 7"));
    EXPECT_THAT(FindingsOf(R"({"profile": {"nimb": {}}, "profile": {"nimb": {"auth": {}}}})"), IsEmpty());
}

TEST_F(SchemaDocumentTest, ADocumentOfHundredsOfKeysIsCheckedAsAWhole)
{
    const SchemaStorePtr run = SchemaStore::GetStore(true);
    std::string keys;
    for (int i = 0; i < 400; ++i) {
        const std::string key = "key" + std::to_string(i);
        SetSchema("big-1.0.0_1.0", "big", "g", key,
                  R"({"component": "big", "group": "g", "key": ")" + key +
                      R"(", "mutableDefaultConfig": true, "schema": {"properties": {"n": {"$ref": "#/definitions/n"}},
                      "definitions": {"n": {"type": "integer", "maximum": 399}}}})",
                  run, false);
        keys += (i > 0 ? ", \"" : "\"") + key + "\": {\"n\": " + std::to_string(i + 1) + "}";
    }
    cache_ = run->GetCache();
    EXPECT_THAT(FindingsOf("{\"big\": {\"g\": {" + keys + "}}}"),
                ElementsAre("/big/g/key399/n: expected at most 399, found 400"));
}
