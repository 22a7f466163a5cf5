#include "NimbConfigStore.h"
#include "RunStatement.h"
#include "StoreConnection.h"
#include "StoreStatements.h"

namespace NimbConfigStore
{
namespace
{
void ReadMetrics(const std::string& function, const char* sql, DBStore::RowCallback callback, void* context)
{
    RunOrThrow(ConnectToConfigStore(), sql, ("Failed to get data from " + function).c_str(), {}, callback, context);
}

int KeepNumber(void* context, int, char** values, char**)
{
    if (values[0] != nullptr) {
        *static_cast<std::string*>(context) = values[0];
    }
    return 0;
}

int ReadNumber(const std::string& function, const char* sql)
{
    std::string number = "0";  // stays when the sum is of nothing, and so null
    ReadMetrics(function, sql, KeepNumber, &number);
    return std::stoi(number);
}

int AddRow(void* context, int columns, char** values, char**)
{
    std::string& row = static_cast<std::vector<std::string>*>(context)->emplace_back();
    for (int i = 0; i < columns; ++i) {
        row += i == 0 ? "" : ",";
        row += values[i] != nullptr ? values[i] : "0";
    }
    return 0;
}
}  // namespace

int GetVitalConfigSize()
{
    return ReadNumber("GetVitalConfigSize", Statements::SUM_VITAL_SIZE);
}

int GetUserConfigSize()
{
    return ReadNumber("GetUserConfigSize", Statements::SUM_USER_SIZE);
}

int GetCachedConfigSize()
{
    return ReadNumber("GetCachedConfigSize", Statements::SUM_CACHED_SIZE);
}

int GetConfigRowCount()
{
    return ReadNumber("GetConfigRowCount", Statements::COUNT_CONFIG_ROWS);
}

std::vector<std::string> GetConfigMetrics()
{
    std::vector<std::string> rows;
    ReadMetrics("GetConfigMetrics", Statements::SELECT_ROW_SIZES, AddRow, &rows);
    return rows;
}
}  // namespace NimbConfigStore
