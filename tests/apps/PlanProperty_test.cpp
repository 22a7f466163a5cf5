#include <random>
#include <set>

#include "PlanModel.h"
#include "PlanTest.h"

namespace
{
/// Random stores and documents: what the plan says is what the boot then does.
class PlanPropertyTest : public PlanTest, public ::testing::WithParamInterface<int>
{
protected:
    struct Object
    {
        const char* group;
        const char* key;
        const char* property;  // that names an instance; empty for a singleton
        std::vector<std::string> identifiers;
    };
    inline static const std::vector<Object> OBJECTS = {
        {"network", "dns", "", {""}},
        {"network", "routes", "cs_generated_id", {"g1", "g2"}},
        {"network", "vswitch", "name", {"a", "b", "c/d"}},
        {"network", "uplinks", "name", {"up0", "up1"}},
        {"network", "orvnics", "id", {"orv0", "orv1"}},
        {"network_gnx", "switches", "name", {"sw0", "sw1"}},
        {"authorization", "permissions", "id", {"p0", "p1"}},
        {"advanced_options", "user_vars", "id", {"BRX_IP", "Other"}},
        {"authentication", "user_accounts", "id", {"root", "svc-qrm-1", "bob"}},
        {"system", "keyboard", "", {""}},
        {"gone", "thing", "", {"", "left"}}};

    inline static const std::set<std::string> KNOWN = {"network",          "network_gnx",    "authorization",
                                                       "advanced_options", "authentication", "system"};
    inline static const std::set<std::string> ALL = {
        "network", "network_gnx", "authorization", "advanced_options", "authentication", "system", "gone"};
    inline static const std::set<std::string> SHARED = {"vswitch", "uplinks"};

    std::size_t Below(std::size_t limit) { return random_() % limit; }
    bool OneIn(std::size_t n) { return Below(n) == 0; }
    template <class Item>
    const Item& One(const std::vector<Item>& items)
    {
        return items[Below(items.size())];
    }

    std::string Value(const Object& object, const std::string& identifier)
    {
        const std::string some =
            "[" + std::to_string(Below(3)) + (OneIn(2) ? ",{\"x\":" + std::to_string(Below(3)) + "}" : "") + "]";
        if (std::string(object.key) == "dns") {
            return OneIn(4) ? "{}" : R"({"servers":["10.0.0.)" + std::to_string(Below(4)) + "\"]}";
        }
        std::string text = "{";
        if (*object.property != '\0') {
            text += std::string("\"") + object.property + "\":\"" + identifier + "\",";
        }
        if (OneIn(2)) {
            text += R"("port_connection_type":"GNX","gnx_port":{"port_key":")" + std::to_string(Below(3)) + "\"},";
        }
        return text + R"("principal":")" + (OneIn(2) ? "svc-qrm-1" : "alice") + R"(","some~/":)" + some + "}";
    }

    std::string Sql(const std::string& text) { return "'" + text + "'"; }
    std::string SqlMaybe(const Object& object, const std::string& identifier, std::size_t oneIn)
    {
        return OneIn(oneIn) ? Sql(Value(object, identifier)) : "NULL";
    }

    void RandomStore()
    {
        Host().Sql("DELETE FROM Config; DELETE FROM DesiredUserConfig");
        for (const Object& object : OBJECTS) {
            for (const std::string& identifier : object.identifiers) {
                if (OneIn(3)) {
                    continue;
                }
                const bool permission =
                    std::string(object.key) == "permissions";  // a row without value fails documents
                Host().Sql(
                    "INSERT INTO Config (Component, ConfigGroup, Name, Identifier, Version, Revision, Success, "
                    "UserValue, "
                    "VitalValue, CachedValue, AutoConfValue, DesiredValue, CreationTime) VALUES ('nimb', " +
                    Sql(object.group) + ", " + Sql(object.key) + ", " + Sql(identifier) + ", '1.0', 3, " +
                    One<std::string>({"0", "1", "NULL"}) + ", " + SqlMaybe(object, identifier, permission ? 1 : 2) +
                    ", " + SqlMaybe(object, identifier, 3) + ", " + SqlMaybe(object, identifier, 3) + ", " +
                    SqlMaybe(object, identifier, 3) + ", " + SqlMaybe(object, identifier, 4) +
                    ", '2026-01-02 03:04:05')");
            }
        }
        SetEntry("BOOT_MODE", "0");
    }

    /// @param among  the groups or keys of objects that it may hold.
    std::string Document(const std::set<std::string>& among)
    {
        std::map<std::string, std::string> groups;
        for (const Object& object : OBJECTS) {
            if (OneIn(2) || among.count(object.group) + among.count(object.key) == 0) {
                continue;
            }
            std::string value;
            for (const std::string& identifier : object.identifiers) {
                if (identifier != "BRX_IP" && !OneIn(3)) {
                    value += (value.empty() ? "" : ",") + Value(object, identifier);
                }
            }
            const bool deleted = OneIn(4) && (std::string(object.key) == "dns" || std::string(object.key) == "uplinks");
            const std::string whole = *object.property != '\0' ? "[" + value + "]" : Value(object, "");
            std::string& group = groups[object.group];
            group += (group.empty() ? "" : ",") + Sql(object.key) + ":" + (deleted ? "'DELETE_DEFAULT'" : "");
            std::replace(group.begin(), group.end(), '\'', '"');
            group += deleted ? "" : whole;
        }
        std::string text;
        for (const auto& [group, keys] : groups) {
            text += (text.empty() ? "" : ",") + ("\"" + group) + "\":{" + keys + "}";
        }
        return R"({"nimb":{)" + text + "}}";
    }

    void StageDocument(const std::string& verb, const std::set<std::string>& among = KNOWN)
    {
        Input(Document(among));
        (void)Run({"desired", verb, "-"});  // one that cannot be staged leaves what was
    }

    /// What no document stages: rows that other software writes for mode 4.
    void StageRows()
    {
        for (const char* action : {"SET", "SET_DEFAULT", "DELETE", "DELETE_INSTANCE"}) {
            const Object& object = One(OBJECTS);
            const std::string& identifier = One(object.identifiers);
            Host().Sql(
                "INSERT OR REPLACE INTO DesiredUserConfig (Component, ConfigGroup, Name, Identifier, Version, "
                "BootAction, "
                "Value, VitalValue) VALUES ('nimb', " +
                Sql(object.group) + ", " + Sql(object.key) + ", " + Sql(identifier) + ", '2', " + Sql(action) + ", " +
                SqlMaybe(object, identifier, 1) + ", " + SqlMaybe(object, identifier, 2) + ")");
        }
    }

    void StageFor(int mode)
    {
        switch (mode) {
            case 1:
                StageDocument("set");
                break;
            case 2:
                Host().WriteFile("/etc/talvor/boot_configuration.json", Document(ALL));
                break;
            case 3:
                // A live row of an object that is not shared is refused when it is staged again.
                StageDocument("smartnic", OneIn(3) ? KNOWN : SHARED);
                break;
            case 4: {
                StageDocument("set");
                const Object& object = One(OBJECTS);
                (void)Run({"desired", "delete", std::string("nimb/") + object.group + "/" + object.key});
                break;
            }
            default:
                break;
        }
        if (mode != 3 && OneIn(3)) {
            StageRows();
        }
        if (mode == 1 && OneIn(3)) {
            StageDocument("set");
        }
        SetEntry("BOOT_MODE", std::to_string(mode));
    }

    void PlanBootCompare()
    {
        PlanModel planned(Host());
        const PlanModel before = planned;
        const Ran plan = Run({"desired", "plan", "--json"});
        NimbConfigStore::JsonDocument document;
        ASSERT_TRUE(ConfigStoreDocument::ParseText(plan.output, document)) << plan.output << plan.errors;
        planned.Apply(document);
        Host().Remove("/var/log/talvor/events.jsonl");
        ASSERT_EQ(Run({"boot", "load", "--no-restore"}).status, 0);
        const PlanModel booted(Host());
        EXPECT_EQ(planned, booted) << plan.output << "before\n"
                                   << before.Text() << "planned\n"
                                   << planned.Text() << "booted\n"
                                   << booted.Text();
        const bool failed = !Host().EventIds().empty();
        EXPECT_EQ(plan.status, failed ? 1 : before == booted ? 0 : 3) << plan.errors;
    }

private:
    std::mt19937 random_{static_cast<std::mt19937::result_type>(GetParam())};
};
}  // namespace

TEST_P(PlanPropertyTest, ThePlanIsWhatTheBootDoes)
{
    for (int mode = 0; mode <= 4; ++mode) {
        SCOPED_TRACE("mode " + std::to_string(mode));
        RandomStore();
        StageFor(mode);
        PlanBootCompare();
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, PlanPropertyTest, ::testing::Range(0, 8));
