#include "StoreFault.h"

#include <sqlite3.h>

namespace
{
int refusedAction = 0;
std::string refusedArgument;
std::string refusedColumn;

bool Matches(const std::string& refused, const char* given)
{
    return refused.empty() || (given != nullptr && refused == given);
}

int Authorize(void*, int action, const char* argument, const char* column, const char*, const char*)
{
    const bool refused =
        action == refusedAction && Matches(refusedArgument, argument) && Matches(refusedColumn, column);
    return refused ? SQLITE_DENY : SQLITE_OK;
}

int InstallAuthorizer(sqlite3* database, const char**, const void*)
{
    return sqlite3_set_authorizer(database, Authorize, nullptr);
}

// SQLite declares the entry without parameters and calls it with those of an extension's.
using AutoExtension = void (*)();
AutoExtension Entry()
{
    return reinterpret_cast<AutoExtension>(InstallAuthorizer);
}
}  // namespace

StoreFault::StoreFault(int action, const std::string& argument, const std::string& column)
{
    refusedAction = action;
    refusedArgument = argument;
    refusedColumn = column;
    sqlite3_auto_extension(Entry());
}

StoreFault::~StoreFault()
{
    sqlite3_cancel_auto_extension(Entry());
    refusedAction = 0;
}
