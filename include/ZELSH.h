#pragma once

#include "ZEL.h"

#pragma GCC visibility push(default)

/// The kernel information shell's flat interface. Nothing here throws; every call answers with a status of ZEL.h.
extern "C" {
/// A resolved path: a leaf of the kernel's information tree and the instances that lead to it.
struct ZELSHPath;

/// Resolves the absolute text path @p text ("/system/quenfs/inodes/42/stats"): each component is a node's name or,
/// below an instance branch, the instance. Empty components count for nothing.
/// @param path  receives the path, to be freed with ZELSHPath_Delete; null on failure.
/// @return ORV_NOT_FOUND when no leaf has that path, ORV_BAD_PARAM for a null argument or a text that does not begin
///         with "/".
ORV_ReturnStatus ZELSHPath_Form(const char* text, ZELSHPath** path);

/// The leaf that @p path ends at.
ORV_ReturnStatus ZELSHPath_GetLeafElement(const ZELSHPath* path, ZEL_NodeID* node);

/// A new list of the path's instance arguments, empty when it has none; the caller frees it with
/// ZEL_ParamListDestroy. Null on failure.
ORV_ReturnStatus ZELSHPath_GetInstArgs(const ZELSHPath* path, ZEL_ParamList** arguments);

/// Null is allowed.
void ZELSHPath_Delete(ZELSHPath* path);
}

#pragma GCC visibility pop
