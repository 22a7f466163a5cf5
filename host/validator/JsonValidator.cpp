#include "JsonValidator.h"

#include "CompiledSchema.h"
#include "ConfigStoreException.h"
#include "FindingVisitor.h"
#include "PlainAcceptance.h"
#include "SchemaCheck.h"

using NimbConfigStore::JsonDocument;
using NimbConfigStore::JsonValue;

namespace JsonValidator
{
namespace
{
/// A document's schema holds an object's below its root, "profile", component, group, alternatives and array.
constexpr unsigned LEVELS_OF_A_DOCUMENT = 6;

std::string ProblemOf(const JsonValue& schema, JsonSchema::SchemaPatterns& patterns, unsigned levelsAbove)
{
    try {
        JsonSchema::SchemaCheck(schema, patterns, levelsAbove).Run();
        return "";
    } catch (const JsonSchema::SchemaProblem& problem) {
        return problem.what();
    }
}

void WriteReport(const JsonSchema::Findings& findings, const std::string& name, JsonDocument& report)
{
    auto& allocator = report.GetAllocator();
    report.SetArray();
    for (const JsonSchema::Finding& finding : findings) {
        JsonValue entry(rapidjson::kObjectType);
        entry.AddMember("field", JsonSchema::TextValue(name + finding.place, allocator), allocator);
        entry.AddMember("error", JsonSchema::TextValue(finding.expected + ", found " + finding.found, allocator),
                        allocator);
        report.PushBack(entry, allocator);
    }
}
}  // namespace

void Validate(const JsonValue& schema, const JsonValue& value, JsonDocument& report, const std::set<int>& rules,
              const std::string& name)
{
    JsonSchema::SchemaPatterns& patterns = JsonSchema::SchemaPatterns::OfThread();
    const std::string problem = ProblemOf(schema, patterns, 0);
    if (!problem.empty()) {
        throw NimbConfigStore::ConfigStoreException(NimbConfigStore::CS_ERROR_OPERATION,
                                                    ("Unusable schema: " + problem).c_str());
    }
    JsonSchema::Findings findings;
    if (!JsonSchema::PlainAcceptance(schema, rules, patterns).Keeps(value)) {
        const JsonSchema::CompiledSchema compiled(schema, rules);
        JsonSchema::ValidationState state(patterns);
        JsonSchema::FindingVisitor(state, value, nullptr, &findings).Check(compiled.Root());
    }
    WriteReport(findings, name, report);
}

std::string CheckSchema(const JsonValue& schema)
{
    return ProblemOf(schema, JsonSchema::SchemaPatterns::OfThread(), LEVELS_OF_A_DOCUMENT);
}
}  // namespace JsonValidator
