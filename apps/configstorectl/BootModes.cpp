#include "BootModes.h"

#include <stdexcept>

namespace ConfigStoreCtl
{
namespace
{
const char* const NAMES[] = {"none", "desired", "boot-config", "smartnic", "hostapi"};
constexpr int MODES = static_cast<int>(std::size(NAMES));

int ModeNumber(const std::string& text)
{
    for (int mode = 0; mode < MODES; ++mode) {
        if (text == NAMES[mode] || text == std::to_string(mode)) {
            return mode;
        }
    }
    return -1;
}
}  // namespace

const char* BootModeName(int mode)
{
    return mode >= 0 && mode < MODES ? NAMES[mode] : "unknown";
}

std::string BootModeText(std::optional<int> mode)
{
    return mode ? std::to_string(*mode) + " (" + BootModeName(*mode) + ")" : "-";
}

std::optional<int> StoredBootMode()
{
    try {
        return NimbConfigStore::GetBootMode();
    } catch (const std::logic_error&) {
        return std::nullopt;
    }
}

NimbConfigStore::BOOTMODE ParseBootMode(const std::string& text)
{
    const int mode = ModeNumber(text);
    if (mode < 0) {
        throw std::invalid_argument(CheckBootMode(text));
    }
    return static_cast<NimbConfigStore::BOOTMODE>(mode);
}

std::string CheckBootMode(const std::string& text)
{
    return ModeNumber(text) >= 0
               ? ""
               : "'" + text + "' is none of none, desired, boot-config, smartnic, hostapi or their numbers 0 to 4";
}
}  // namespace ConfigStoreCtl
