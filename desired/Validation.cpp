#include <set>

#include "CSLogger.h"
#include "JsonValidator.h"
#include "NimbConfigStore.h"
#include "NimbSchemaStore.h"

namespace NimbConfigStore
{
namespace
{
using namespace JsonValidator;

const std::set<int> DOCUMENT_RULES{RULE_TYPES, RULE_PRESENCE, RULE_VALUES, RULE_ARRAYS, RULE_MEMBERS};
const std::set<int> OBJECT_RULES{RULE_TYPES, RULE_PRESENCE, RULE_VALUES, RULE_ARRAYS, RULE_MEMBERS};
}  // namespace

bool ValidateDesiredDocument(rapidjson::Document& desired,
                             const std::shared_ptr<NimbSchemaStore::SchemaObjectCache>& cache)
{
    if (cache == nullptr) {
        throw ConfigStoreException(CS_ERROR_OPERATION, "A desired document cannot be validated without schemas");
    }
    JsonDocument scratch;  // before the schema, which refers to its values
    JsonDocument schema;
    NimbSchemaStore::GenerateSchemaDocument(desired, cache, schema, scratch);
    JsonDocument report;
    JsonValidator::Validate(schema, desired, report, DOCUMENT_RULES, "");
    return checkValidationErrors(report);
}

bool ValidateUserObject(const rapidjson::Value& schema, const rapidjson::Value& object, const std::string& name,
                        bool allowDeleteDefault)
{
    if (object.IsString() && allowDeleteDefault) {
        return object == "DELETE_DEFAULT";
    }
    JsonDocument report;
    JsonValidator::Validate(schema, object, report, OBJECT_RULES, name);
    return checkValidationErrors(report);
}

bool checkValidationErrors(const rapidjson::Value& report)
{
    for (const JsonValue& finding : report.GetArray()) {
        CSLogger::LogErrCode(CSLogger::ERROR, CS_ERROR_VALIDATION, finding["field"].GetString(),
                             finding["error"].GetString());
    }
    return report.Empty();
}
}  // namespace NimbConfigStore
