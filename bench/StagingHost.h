#pragma once

#include <string>

#include "TestHost.h"

/// Two hundred objects in twenty groups, all but a tenth of them with many instances.
inline constexpr int STAGING_KEYS = 200;

/// The schema of one instance of each.
std::string StagingSchema(int key);

/// Makes the stores of @p host and registers the objects.
void FillStagingHost(TestHost& host);

/// A desired document of @p objects instances of about 250 bytes each.
std::string StagingDocument(int objects);
