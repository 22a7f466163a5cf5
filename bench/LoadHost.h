#pragma once

#include "TestHost.h"

/// How large a host is.
struct LoadSize
{
    int schemaFiles;  ///< of ten objects each, each file with default configuration for all ten
    int descriptors;  ///< those of the schema files included
    int rows;         ///< of Config, a tenth of them staged
};

/// A host before the boot that a software change and a staged desired document have prepared: every step of the
/// load has work. The stores lie in the backup, so that each load starts from the same ones.
void FillLoadHost(TestHost& host, const LoadSize& size);
