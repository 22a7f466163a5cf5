#include "SysAlert.h"

#include <algorithm>
#include <memory>

#include "CSLogger.h"
#include "ZEL.h"

namespace
{
constexpr std::size_t LONGEST_WHOLE_ALERT = 2047;
constexpr std::size_t CUT_ALERT = 2048;

using ParamListPtr = std::unique_ptr<ZEL_ParamList, void (*)(ZEL_ParamList*)>;
}  // namespace

namespace NimbConfigStore
{
void SetLSSysAlert(std::string text)
{
    if (text.size() > LONGEST_WHOLE_ALERT) {
        text.resize(CUT_ALERT);
    }
    std::replace(text.begin(), text.end(), '\0', '?');  // the kernel takes the text up to its first NUL
    const ParamListPtr input(ZEL_ParamListCreate(0, 1), ZEL_ParamListDestroy);
    if (input == nullptr) {
        CSLogger::Log(CSLogger::ERROR, "Failed to raise sysAlert. Failed to create zel param list.");
        return;
    }
    if (ZEL_ParamListAddString(input.get(), text.c_str()) != ORV_OK) {
        CSLogger::Log(CSLogger::ERROR, "Failed to raise sysAlert. Failed to add string to zel param list.");
        return;
    }
    const ORV_ReturnStatus status = ZEL_Set(ZEL_NODE_system_sysAlert, nullptr, input.get(), nullptr, nullptr);
    if (status != ORV_OK) {
        CSLogger::Log(CSLogger::ERROR, "Failed to raise sysAlert with status: %s", ORV_ReturnStatusToString(status));
    }
}
}  // namespace NimbConfigStore
