#include <cctype>
#include <cerrno>
#include <cstdlib>

#include "ZELSH.h"

unsigned long strtoul_limit(const char* text, char** end, int base, unsigned long limit)
{
    const char* digits = text;
    while (std::isspace(static_cast<unsigned char>(*digits)) != 0) {
        ++digits;
    }
    // strtoul() takes "-1" for the greatest number there is.
    if (*digits == '-' || *digits == '+') {
        if (end != nullptr) {
            *end = const_cast<char*>(text);
        }
        errno = EINVAL;
        return 0;
    }
    const unsigned long number = std::strtoul(text, end, base);
    if (number <= limit) {
        return number;
    }
    errno = ERANGE;
    return limit;
}

int strtoul_limit_check(const char* text, int base, unsigned long limit, unsigned long* number)
{
    if (text == nullptr || number == nullptr || std::isspace(static_cast<unsigned char>(*text)) != 0) {
        return 0;
    }
    char* end = nullptr;
    const int before = errno;
    errno = 0;
    const unsigned long value = strtoul_limit(text, &end, base, limit);
    const bool isNumber = errno == 0 && end != text && *end == '\0';
    errno = before;
    if (isNumber) {
        *number = value;
    }
    return isNumber ? 1 : 0;
}
