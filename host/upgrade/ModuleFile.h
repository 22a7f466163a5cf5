#pragma once

#include <string>

/// True when the file with this real path holds every part of itself that the loader maps. The loader does not look: a
/// module that was cut off ends the process when the missing part is touched.
bool IsWholeModule(const std::string& realPath);
