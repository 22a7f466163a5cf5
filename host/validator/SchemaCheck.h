#pragma once

#include <stdexcept>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "Json.h"
#include "JsonPlace.h"
#include "SchemaKeywords.h"
#include "SchemaPatterns.h"

namespace JsonSchema
{
/// Why a schema is unusable.
struct SchemaProblem : std::runtime_error
{
    using std::runtime_error::runtime_error;
};

/// One pass over a schema: every keyword known and of the right shape, every pattern compiled, every reference
/// leading to a schema in the same document without coming back to itself.
class SchemaCheck
{
public:
    /// @param levelsAbove  how many levels of a larger schema @p root must leave room for.
    SchemaCheck(const NimbConfigStore::JsonValue& root, SchemaPatterns& patterns, unsigned levelsAbove);

    /// @throws SchemaProblem
    void Run();

private:
    using Value = NimbConfigStore::JsonValue;

    /// How deep and how large a schema is when each reference is replaced by what it names: a validator walks that.
    struct Extent
    {
        unsigned levels = 1;
        double schemas = 1;
    };

    Extent Schema(const Value& schema, const Place* place);
    Extent Keywords(const Value& schema, const Place* place);
    Extent Target(const Value& schema, const Place* place);
    Extent ReferenceKeyword(const Value& schema, const Value& reference, const Place* place);
    Extent SubschemasOf(Shape shape, const Value& value, const Place* place);
    void Shaped(const Keyword& keyword, const Value& value, const Place* place);
    void Names(const Value& map, const Place* place);
    void PatternNames(const Value& map, const Place* place);
    void Pattern(const Value& text, const Place* place);
    bool HasShape(Shape shape, const Value& value) const;

    const Value& root_;
    SchemaPatterns& patterns_;
    std::unordered_set<const Value*> positions_;        ///< empty until a reference asks for them
    std::unordered_map<const Value*, Extent> targets_;  ///< what references lead to
    std::vector<const Value*> underWay_;                ///< from the root down
    unsigned depth_;
};
}  // namespace JsonSchema
