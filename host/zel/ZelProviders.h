#pragma once

#include "ZelNodes.h"

// The providers, each in the source file of its name.

extern const ZelProvider ZEL_BOOT_PROVIDER;
extern const ZelProvider ZEL_SYSTEM_PROVIDER;
extern const ZelProvider ZEL_ALERT_PROVIDER;
extern const ZelProvider ZEL_RAMDISK_PROVIDER;
extern const ZelProvider ZEL_INODE_PROVIDER;
extern const ZelProvider ZEL_CPU_PROVIDER;
extern const ZelProvider ZEL_MEMORY_PROVIDER;
extern const ZelProvider ZEL_BLOCK_PROVIDER;
extern const ZelProvider ZEL_MOUNT_PROVIDER;
extern const ZelProvider ZEL_NET_PROVIDER;
extern const ZelProvider ZEL_ADDRESS_PROVIDER;
extern const ZelProvider ZEL_POWER_PROVIDER;
extern const ZelProvider ZEL_PROCESS_PROVIDER;
