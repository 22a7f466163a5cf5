#pragma once

#include <sstream>
#include <string>

// What a Linux kernel's own texts say about the boot.

/// The value of the first word "NAME=VALUE" of a boot command line; empty when there is none.
inline std::string BootWordValue(const std::string& commandLine, const std::string& name)
{
    std::istringstream words(commandLine);
    for (std::string word; words >> word;) {
        if (word.starts_with(name + "=")) {
            return word.substr(name.size() + 1);
        }
    }
    return "";
}

inline bool HasBootWord(const std::string& commandLine, const std::string& wanted)
{
    std::istringstream words(commandLine);
    for (std::string word; words >> word;) {
        if (word == wanted) {
            return true;
        }
    }
    return false;
}

/// The MAC address aa:bb:cc:dd:ee:ff of BOOTIF=01-aa-bb-cc-dd-ee-ff, which network boot loaders pass on: the
/// hardware type and the address. Empty for a host that did not boot from the network.
inline std::string BootMacOf(const std::string& commandLine)
{
    const std::string value = BootWordValue(commandLine, "BOOTIF");
    static constexpr std::string_view FORM = "xx-xx-xx-xx-xx-xx-xx";
    if (value.size() != FORM.size()) {
        return "";
    }
    std::string mac;
    for (std::size_t i = 0; i < value.size(); ++i) {
        const bool digit = std::string_view("0123456789abcdefABCDEF").find(value[i]) != std::string_view::npos;
        if (FORM[i] == 'x' ? !digit : value[i] != '-') {
            return "";
        }
        const char lower = value[i] >= 'A' && value[i] <= 'F' ? static_cast<char>(value[i] - 'A' + 'a') : value[i];
        mac += lower == '-' ? ':' : lower;
    }
    return mac.substr(3);
}

/// The four bytes of the boot option: the fourth is 1 after a boot with the word "installerMedia".
inline std::string BootOptionOf(const std::string& commandLine)
{
    std::string bytes(4, '\0');
    bytes[3] = HasBootWord(commandLine, "installerMedia") ? '\1' : '\0';
    return bytes;
}
