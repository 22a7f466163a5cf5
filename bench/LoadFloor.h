#pragma once

#include "TestHost.h"

/// The least that a boot load of a host as FillLoadHost makes it can cost: the same SQL steps through SQLite's own
/// interface, one plain copy per database, one RapidJSON parse per file, one libxml2 parse per descriptor. Nothing is
/// validated, logged or split.
void RunLoadFloor(const TestHost& host);
