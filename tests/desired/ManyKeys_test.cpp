#include <gtest/gtest.h>

#include <algorithm>
#include <ctime>
#include <string>

#include "ConfigStoreDocument.h"
#include "NimbConfigStore.h"
#include "NimbSchemaStore.h"
#include "TestHost.h"

using namespace NimbConfigStore;

// A document's keys are all in one group, where looking each one up among all others would show most.

namespace
{
constexpr int FEW = 500;
constexpr int MANY = 5000;

std::string Key(int number)
{
    return "object" + std::to_string(number);
}

std::string DocumentOf(int keys, const std::string& lastPort)
{
    std::string objects;
    for (int key = 0; key < keys; ++key) {
        objects += (key > 0 ? ", \"" : "\"") + Key(key) + R"(": {"name": "of many", "port": )" +
                   (key + 1 == keys ? lastPort : "22") + "}";
    }
    return R"({"nimb": {"group": {)" + objects + "}}}";
}

class ManyKeysTest : public HostTest
{
protected:
    void SetUp() override
    {
        Host().WithStores();
        const auto store = NimbSchemaStore::SchemaStore::GetStore(true);
        for (int key = 0; key < MANY; ++key) {
            NimbSchemaStore::SetSchema(
                "many-1.0.0_1.0", "nimb", "group", Key(key),
                R"({"component": "nimb", "group": "group", "key": ")" + Key(key) + R"(", "schema": {
                    "type": "object", "additionalProperties": false, "required": ["name"], "properties": {
                    "name": {"type": "string", "minLength": 1}, "port": {"type": "integer", "maximum": 65535}}}})",
                store, false);
        }
        NimbSchemaStore::RemoveUndeclaredSchemas({}, store);
        cache_ = NimbSchemaStore::SchemaStore::GetStore(false)->GetCache();
    }

    /// Processor time, to which nobody else on the machine adds; the least of a few runs.
    double SecondsFor(int keys, const std::string& lastPort, bool expected)
    {
        JsonDocument document;
        EXPECT_TRUE(ConfigStoreDocument::ParseText(DocumentOf(keys, lastPort), document));
        double least = 1e9;
        for (int run = 0; run < 3; ++run) {
            timespec begin = {};
            timespec end = {};
            clock_gettime(CLOCK_THREAD_CPUTIME_ID, &begin);
            EXPECT_EQ(ValidateDesiredDocument(document, cache_), expected);
            clock_gettime(CLOCK_THREAD_CPUTIME_ID, &end);
            least = std::min(least, double(end.tv_sec - begin.tv_sec) + double(end.tv_nsec - begin.tv_nsec) / 1e9);
        }
        return least;
    }

private:
    NimbSchemaStore::SchemaObjectCachePtr cache_;
};

// Ten times the keys: linear time is ten times as much, quadratic time a hundred times.
TEST_F(ManyKeysTest, TheTimeOfAValidDocumentGrowsWithItsKeysAndNotWithTheirSquare)
{
    EXPECT_LT(SecondsFor(MANY, "23", true), 40 * SecondsFor(FEW, "23", true));
}

TEST_F(ManyKeysTest, TheTimeOfFindingOneMistakeGrowsWithTheKeysAndNotWithTheirSquare)
{
    EXPECT_LT(SecondsFor(MANY, "65536", false), 40 * SecondsFor(FEW, "65536", false));
}
}  // namespace
