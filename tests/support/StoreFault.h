#pragma once

#include <string>

/// Makes the databases refuse one kind of work, on every connection opened while this exists. One at a time.
class StoreFault
{
public:
    /// @param action  an authorizer code of SQLite: SQLITE_UPDATE, SQLITE_READ (a table), SQLITE_TRANSACTION (a verb),
    /// …
    /// @param argument  what it is done to; empty stands for everything.
    /// @param column  for SQLITE_READ and SQLITE_UPDATE: refused for this column alone; empty stands for every one.
    StoreFault(int action, const std::string& argument, const std::string& column = "");
    ~StoreFault();
    StoreFault(const StoreFault&) = delete;
    StoreFault& operator=(const StoreFault&) = delete;
};
