#pragma once

#include <random>
#include <set>
#include <string>

/// Random schemas and values that have a fair chance to meet.
class RandomSchemas
{
public:
    enum class Keywords
    {
        READ_ALIKE,  ///< those that RapidJSON's own validator reads alike
        ALL,         ///< with references to "#/definitions/x"
    };

    explicit RandomSchemas(unsigned seed, Keywords keywords = Keywords::READ_ALIKE) : random_(seed), keywords_(keywords)
    {}

    std::string Schema(int depth)
    {
        return "{" + List([&] { return Keyword(depth); }) + "}";
    }

    std::string Value(int depth)
    {
        switch (Below(depth > 0 ? 8 : 6)) {
            case 0:
                return "null";
            case 1:
                return Below(2) == 0 ? "true" : "false";
            case 2:
            case 3:
                return std::to_string(Below(7) - 3);
            case 4:
                return std::to_string(Below(4)) + ".5";
            case 5:
                return Text();
            case 6:
                return "[" + List([&] { return Value(depth - 1); }) + "]";
            default:
                return "{" + Members([&] { return Value(depth - 1); }) + "}";
        }
    }

    /// Any set of rule families.
    std::set<int> Rules()
    {
        std::set<int> rules;
        for (int rule = 0; rule <= 8; ++rule) {
            if (Below(4) != 0) {
                rules.insert(rule);
            }
        }
        return rules;
    }

private:
    int Below(int limit) { return static_cast<int>(random_() % static_cast<unsigned>(limit)); }
    std::string Text() { return "\"" + std::string(static_cast<std::size_t>(Below(4)), 'a') + "\""; }
    std::string Number() { return std::to_string(Below(5) - 2); }

    template <class One>
    std::string List(One&& one, int least = 0)
    {
        std::string list;
        for (int i = Below(3) + least; i > 0; --i) {
            list += (list.empty() ? "" : ", ") + one();
        }
        return list;
    }

    template <class One>
    std::string Members(One&& one)
    {
        std::string members;
        for (const char* name : {"a", "b", "c"}) {
            if (Below(2) == 0) {
                members += (members.empty() ? "\"" : ", \"") + std::string(name) + "\": " + one();
            }
        }
        return members;
    }

    std::string Keyword(int depth)
    {
        static const char* const TYPES[] = {"null", "boolean", "integer", "number", "string", "array", "object"};
        const auto inner = [&] { return Schema(depth - 1); };
        if (keywords_ == Keywords::ALL && Below(2) == 0) {
            return depth > 0 ? OtherHolder(inner) : OtherKeyword();
        }
        switch (Below(depth > 0 ? 18 : 10)) {
            case 0:
            case 1:
                return std::string("\"type\": \"") + TYPES[Below(7)] + "\"";
            case 2:
                return "\"enum\": [" + List([&] { return Below(2) == 0 ? Text() : Number(); }, 1) + "]";
            case 3:
                return "\"minimum\": " + Number();
            case 4:
                return "\"maximum\": " + Number();
            case 5:
                return "\"minLength\": " + std::to_string(Below(3));
            case 6:
                return "\"maxItems\": " + std::to_string(Below(3));
            case 7:
                return "\"uniqueItems\": true";
            case 8:
                return R"("required": ["a", "b"])";
            case 9:
                return "\"minProperties\": " + std::to_string(Below(3));
            case 10:
                return "\"items\": " + inner();
            case 11:
            case 12:
                return "\"properties\": {" + Members(inner) + "}";
            case 13:
                return Below(2) == 0 ? "\"additionalProperties\": false" : "\"additionalProperties\": " + inner();
            case 14:
                return "\"allOf\": [" + List(inner, 1) + "]";
            case 15:
                return "\"anyOf\": [" + List(inner, 1) + "]";
            case 16:
                return "\"oneOf\": [" + List(inner, 1) + "]";
            default:
                return "\"not\": " + inner();
        }
    }

    std::string OtherKeyword()
    {
        switch (Below(9)) {
            case 0:
                return "\"const\": " + Value(1);
            case 1:
                return R"("type": ["integer", "string", "null"])";
            case 2:
                return "\"exclusiveMinimum\": " + Number();
            case 3:
                return "\"exclusiveMaximum\": " + Number();
            case 4:
                return "\"multipleOf\": " + std::string(Below(2) == 0 ? "2" : "0.5");
            case 5:
                return R"("pattern": "^a+$")";
            case 6:
                return "\"maxProperties\": " + std::to_string(Below(3));
            case 7:
                return "\"default\": " + Value(0);
            default:
                return R"("readOnly": false, "deprecated": true)";
        }
    }

    template <class Inner>
    std::string OtherHolder(Inner&& inner)
    {
        switch (Below(9)) {
            case 0:
                return R"("patternProperties": {"^[ab]$": )" + inner() + "}";
            case 1:
                return "\"propertyNames\": " + inner();
            case 2:
                return "\"contains\": " + inner();
            case 3:
                return R"("dependencies": {"a": ["b"], "c": )" + inner() + "}";
            case 4:
                return "\"if\": " + inner() + ", \"then\": " + inner() + ", \"else\": " + inner();
            case 5:
                return "\"items\": [" + List(inner) + "]";
            case 6:
                return "\"additionalItems\": " + inner();
            case 7:
                return R"("properties": {"a": {"$ref": "#/definitions/x"}, "b": )" + inner() + "}";
            default:
                return OtherKeyword();
        }
    }

    std::mt19937 random_;
    const Keywords keywords_;
};
