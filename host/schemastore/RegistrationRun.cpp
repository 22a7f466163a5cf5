#include "RegistrationRun.h"

#include <algorithm>
#include <array>
#include <utility>

#include "ConfigStoreException.h"
#include "SchemaStatements.h"

using NimbConfigStore::ConfigStoreException;

namespace NimbSchemaStore
{
namespace
{
[[noreturn]] void Fail(const std::string& text)
{
    throw ConfigStoreException(NimbConfigStore::CS_ERROR_OPERATION, text.c_str());
}

/// Runs one statement with its values in order.
template <class... Values>
void Run(const DBStore::ConnectionPtr& connection, const char* sql, const std::string& failure, const Values&... values)
{
    const DBStore::StatementPtr statement = DBStore::internal::Prepare(connection, sql, DBStore::WAIT_LIMIT_MS);
    int index = 0;
    const bool bound = (DBStore::internal::Bind(statement, ++index, values) && ...);
    if (!bound ||
        DBStore::ExecuteStmt(connection, statement, nullptr, nullptr, DBStore::WAIT_LIMIT_MS) != DBStore::SUCCESS) {
        Fail(failure);
    }
}

std::int64_t Number(int value)
{
    return value;
}

std::string_view PackageOf(std::string_view schemaId)
{
    return schemaId.substr(0, schemaId.rfind('-'));
}

std::string VersionOf(const std::string& schemaId)
{
    const std::size_t hyphen = schemaId.rfind('-');
    return hyphen == std::string::npos ? "" : schemaId.substr(hyphen + 1);
}

int TakeText(void* texts, int, char** values, char**)
{
    static_cast<std::set<std::string>*>(texts)->insert(values[0] != nullptr ? values[0] : "");
    return 0;
}
}  // namespace

RegistrationRun::RegistrationRun(DBStore::ConnectionPtr connection) : connection_(std::move(connection))
{
    if (DBStore::BeginTransaction(connection_) != DBStore::SUCCESS) {
        Fail("Failed to open the schema store for writing: another registration run holds it");
    }
}

RegistrationRun::~RegistrationRun()
{
    if (open_) {
        (void)DBStore::CancelTransaction(connection_);  // logged there; closing the connection undoes it as well
    }
}

void RegistrationRun::RequireOpen() const
{
    if (!open_) {
        Fail("The schema store is not open for writing: its registration run has ended");
    }
}

void RegistrationRun::Register(const std::string& schemaId, const SchemaObjectId& id, const std::string& json,
                               bool hasSmartnic)
{
    RequireOpen();
    try {
        const SchemaElement element = ReadSchemaElement(id, json, VersionOf(schemaId));
        if (hasSmartnic == element.placement.empty()) {
            Fail("Schema element " + id.toString() + ": member \"smartnic\" does not match the call");
        }
        Write(schemaId, id, json, element);
    } catch (...) {
        failed_.insert(schemaId);
        throw;
    }
    registered_.insert(schemaId);
}

void RegistrationRun::Write(const std::string& schemaId, const SchemaObjectId& id, const std::string& json,
                            const SchemaElement& element)
{
    if (element.dataFile) {
        Run(connection_, Statements::UPSERT_DATAFILE_KEY, "Failed to register data file key " + id.toString(),
            id.component, id.name, schemaId, json);
        return;
    }
    WriteObject(schemaId, id, json, element);
    WritePlacement(id, element.placement);
}

void RegistrationRun::WriteObject(const std::string& schemaId, const SchemaObjectId& id, const std::string& json,
                                  const SchemaElement& element)
{
    Run(connection_, Statements::UPSERT_OBJECT, "Failed to register schema " + id.toString(), id.component, id.group,
        id.name, Number(element.dspIntegrated), Number(element.schemaType), Number(element.mutableDefaultConfig),
        Number(element.preserveNonUser), Number(element.noRestore), Number(element.singleton), element.version,
        schemaId, json);
}

void RegistrationRun::WritePlacement(const SchemaObjectId& id, const std::string& placement)
{
    const std::string failure = "Failed to register SmartNIC placement of " + id.toString();
    if (placement.empty()) {
        Run(connection_, Statements::DELETE_PLACEMENT, failure, id.component, id.group, id.name);
        return;
    }
    Run(connection_, Statements::UPSERT_PLACEMENT, failure, id.component, id.group, id.name, placement);
}

std::set<std::string> RegistrationRun::StoredSchemaIds()
{
    std::set<std::string> ids;
    const DBStore::StatementPtr select =
        DBStore::internal::Prepare(connection_, Statements::SELECT_SCHEMA_IDS, DBStore::WAIT_LIMIT_MS);
    if (DBStore::ExecuteStmt(connection_, select, TakeText, &ids, DBStore::WAIT_LIMIT_MS) != DBStore::SUCCESS) {
        Fail("Failed to read the schema store");
    }
    return ids;
}

bool RegistrationRun::IsComplete(const std::string& schemaId) const
{
    return registered_.count(schemaId) != 0 && failed_.count(schemaId) == 0;
}

/// A package that is still declared keeps its last good schemas until a newer file of it has registered.
bool RegistrationRun::IsKept(const std::string& schemaId, const std::unordered_set<std::string>& expectedIds) const
{
    if (expectedIds.count(schemaId) != 0) {
        return true;
    }
    bool isDeclared = false;
    bool isReplaced = false;
    for (const std::string& expected : expectedIds) {
        const bool samePackage = PackageOf(expected) == PackageOf(schemaId);
        isDeclared = isDeclared || samePackage;
        isReplaced = isReplaced || (samePackage && IsComplete(expected));
    }
    return isDeclared && !isReplaced;
}

void RegistrationRun::RemoveUndeclared(const std::unordered_set<std::string>& expectedIds)
{
    RequireOpen();
    if (expectedIds.empty()) {
        return;
    }
    for (const std::string& schemaId : StoredSchemaIds()) {
        if (!IsKept(schemaId, expectedIds)) {
            const std::string failure = "Failed to remove the schemas of " + schemaId;
            Run(connection_, Statements::DELETE_PLACEMENTS_OF_ID, failure, schemaId);
            Run(connection_, Statements::DELETE_OBJECTS_OF_ID, failure, schemaId);
            Run(connection_, Statements::DELETE_DATAFILE_KEYS_OF_ID, failure, schemaId);
        }
    }
}

void RegistrationRun::Commit()
{
    RequireOpen();
    if (DBStore::CommitTransaction(connection_) != DBStore::SUCCESS) {
        Fail("Failed to commit the schema store");
    }
    open_ = false;
}
}  // namespace NimbSchemaStore
