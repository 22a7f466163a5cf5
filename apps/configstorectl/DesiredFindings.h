#pragma once

#include <exception>
#include <string>
#include <vector>

#include "Json.h"
#include "Output.h"

// What is wrong with a desired document: a table with a row per finding.
namespace ConfigStoreCtl
{
/// Every finding of the rules that staging applies; no row for a document that keeps to its schemas.
/// @throws CommandFailure when the schema store cannot be opened.
Listing SchemaFindings(const std::string& file, const NimbConfigStore::JsonDocument& desired);

/// Why the document cannot be staged on this host as it is: one row, or none. It is tried on a copy of the host.
Listing StagingFindings(const std::string& file, const NimbConfigStore::JsonDocument& desired);

/// The library's reason, and behind it what it logged on the way there.
std::string WhyNotStaged(const std::exception& failure, const std::vector<std::string>& errorLines);

/// The findings in the log lines of the library's own checks, for a call that only logs what it finds.
Listing LoggedFindings(const std::string& file, const std::vector<std::string>& errorLines);

/// Prints the findings, which are bad news. @param consequence  what follows from them, if anything.
void RefuseDocument(const std::string& file, const Listing& findings, const std::string& consequence, Output& output);
}  // namespace ConfigStoreCtl
