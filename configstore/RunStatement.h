#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "DBStore.h"

namespace NimbConfigStore
{
/// A text to bind, which is not copied; nothing binds NULL.
using BoundText = std::optional<std::string_view>;

/// Runs one statement with @p texts bound in order. False, after a log line of the database library, when it fails.
[[nodiscard]] bool RunStatement(const DBStore::ConnectionPtr& connection, const std::string& sql,
                                const std::vector<BoundText>& texts = {}, DBStore::RowCallback callback = nullptr,
                                void* context = nullptr);

/// The same. @throws ConfigStoreException 2000 @p failure when it fails.
void RunOrThrow(const DBStore::ConnectionPtr& connection, const std::string& sql, const char* failure,
                const std::vector<BoundText>& texts = {}, DBStore::RowCallback callback = nullptr,
                void* context = nullptr);
}  // namespace NimbConfigStore
