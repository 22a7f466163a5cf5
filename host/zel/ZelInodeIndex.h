#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include "Json.h"

/// A file that a tardisk delivered, or the tardisk's own copy of it that stays after a change.
struct ZelDeliveredInode
{
    std::string tardisk;
    std::uint64_t device;
    std::uint64_t sizeBytes;
    bool ambiguous;  ///< files of several file systems have the number
};

/// Delivered files by inode number.
using ZelInodeIndex = std::map<std::uint64_t, ZelDeliveredInode>;

/// Looks every delivered file up once. @p tardisks maps a tardisk's name to the paths of its files; the first one to
/// name a file delivered it.
std::shared_ptr<const ZelInodeIndex> MakeZelInodeIndex(const NimbConfigStore::JsonValue& tardisks);
