#pragma once

#include <exception>
#include <string>

#include "ConfigStoreException.h"

/// Code and text of the store's exception that @p call throws: "2000 text". Another exception gives its text alone,
/// none gives "nothing".
template <typename Call>
std::string ThrownBy(Call call)
{
    try {
        call();
    } catch (const NimbConfigStore::ConfigStoreException& failure) {
        return std::to_string(failure.code()) + " " + failure.what();
    } catch (const std::exception& failure) {
        return failure.what();
    }
    return "nothing";
}
