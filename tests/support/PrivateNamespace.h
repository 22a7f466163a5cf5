#pragma once

#include <functional>
#include <string>

/// Runs @p body in a child process that may mount: in user and mount namespaces of its own, so that nothing which it
/// mounts is seen outside or outlives it. Expectations in it count for the test that runs.
/// @return why the machine does not allow that; empty when the body ran.
std::string RunInPrivateNamespace(const std::function<void()>& body);
