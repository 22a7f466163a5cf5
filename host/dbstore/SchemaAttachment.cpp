#include "CSLogger.h"
#include "Connection.h"
#include "HostUtil.h"

namespace DBStore
{
namespace
{
/// A file URI that neither creates nor changes the file. Anything but plain letters is escaped: a path may hold
/// blanks and the characters that end a URI's path.
std::string ReadOnlyUri(const std::string& path)
{
    constexpr const char* DIGITS = "0123456789ABCDEF";
    std::string uri = "file:";
    for (const char c : path) {
        const auto byte = static_cast<unsigned char>(c);
        if ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '/') {
            uri += c;
        } else {
            uri += {'%', DIGITS[byte >> 4], DIGITS[byte & 15]};
        }
    }
    return uri + "?mode=ro";
}

bool InTransaction(const ConnectionPtr& connection)
{
    const bool open = sqlite3_get_autocommit(connection->Database()) == 0;
    if (open) {
        CSLogger::Log(CSLogger::ERROR, "The schema store cannot be attached or detached inside a transaction");
    }
    return open;
}
}  // namespace

int AttachSchemaStore(const ConnectionPtr& connection)
{
    if (!connection || InTransaction(connection)) {
        return FAILURE;
    }
    // Attached read-only, so that transactions of the connection neither lock nor journal the schema store. Opening
    // it first undoes a half-done change, which a read-only attachment could not, and reports a store that is not
    // there.
    if (!GetConnection(Type::SchemaStore, false)) {
        return FAILURE;
    }
    const std::string uri = ReadOnlyUri(HostPath(StorePath(Type::SchemaStore)));
    const StatementPtr attach = internal::Prepare(connection, "ATTACH ? AS ss", WAIT_LIMIT_MS);
    internal::Bind(attach, 1, std::string_view(uri));
    return ExecuteStmt(connection, attach, nullptr, nullptr, WAIT_LIMIT_MS);
}

int DetachSchemaStore(const ConnectionPtr& connection)
{
    if (!connection || InTransaction(connection)) {
        return FAILURE;
    }
    return Execute(connection, "DETACH ss", WAIT_LIMIT_MS);
}
}  // namespace DBStore
