#include "StoreDisk.h"

#include <sqlite3.h>

namespace
{
sqlite3_vfs* disk = nullptr;  // the real one
int growthsLeft = INT_MAX;
int refusalsLeft = 0;  // from then on
long waitedMicroseconds = 0;

/// The disk's own file follows it in memory.
struct WatchedFile
{
    sqlite3_file base;
    sqlite3_file* Real() { return reinterpret_cast<sqlite3_file*>(this + 1); }
};

sqlite3_file* RealFile(sqlite3_file* file)
{
    return reinterpret_cast<WatchedFile*>(file)->Real();
}

int Close(sqlite3_file* file)
{
    return RealFile(file)->pMethods->xClose(RealFile(file));
}

int Read(sqlite3_file* file, void* data, int size, sqlite3_int64 at)
{
    return RealFile(file)->pMethods->xRead(RealFile(file), data, size, at);
}

bool MayGrow()
{
    if (growthsLeft > 0) {
        --growthsLeft;
        return true;
    }
    if (refusalsLeft > 0) {
        --refusalsLeft;
        return false;
    }
    return true;
}

int Write(sqlite3_file* file, const void* data, int size, sqlite3_int64 at)
{
    sqlite3_int64 length = 0;
    RealFile(file)->pMethods->xFileSize(RealFile(file), &length);
    if (at + size > length && !MayGrow()) {
        return SQLITE_FULL;
    }
    return RealFile(file)->pMethods->xWrite(RealFile(file), data, size, at);
}

int Truncate(sqlite3_file* file, sqlite3_int64 size)
{
    return RealFile(file)->pMethods->xTruncate(RealFile(file), size);
}

int Sync(sqlite3_file* file, int flags)
{
    return RealFile(file)->pMethods->xSync(RealFile(file), flags);
}

int FileSize(sqlite3_file* file, sqlite3_int64* size)
{
    return RealFile(file)->pMethods->xFileSize(RealFile(file), size);
}

int Lock(sqlite3_file* file, int level)
{
    return RealFile(file)->pMethods->xLock(RealFile(file), level);
}

int Unlock(sqlite3_file* file, int level)
{
    return RealFile(file)->pMethods->xUnlock(RealFile(file), level);
}

int CheckReservedLock(sqlite3_file* file, int* held)
{
    return RealFile(file)->pMethods->xCheckReservedLock(RealFile(file), held);
}

int FileControl(sqlite3_file* file, int operation, void* argument)
{
    return RealFile(file)->pMethods->xFileControl(RealFile(file), operation, argument);
}

int SectorSize(sqlite3_file* file)
{
    return RealFile(file)->pMethods->xSectorSize(RealFile(file));
}

int Characteristics(sqlite3_file* file)
{
    return RealFile(file)->pMethods->xDeviceCharacteristics(RealFile(file));
}

// Version 1: the stores neither share memory nor map files.
constexpr sqlite3_io_methods METHODS{1,
                                     Close,
                                     Read,
                                     Write,
                                     Truncate,
                                     Sync,
                                     FileSize,
                                     Lock,
                                     Unlock,
                                     CheckReservedLock,
                                     FileControl,
                                     SectorSize,
                                     Characteristics,
                                     nullptr,
                                     nullptr,
                                     nullptr,
                                     nullptr,
                                     nullptr,
                                     nullptr};

int Open(sqlite3_vfs*, const char* name, sqlite3_file* file, int flags, int* outFlags)
{
    sqlite3_file* real = RealFile(file);
    file->pMethods = nullptr;
    const int result = disk->xOpen(disk, name, real, flags, outFlags);
    file->pMethods = real->pMethods != nullptr ? &METHODS : nullptr;
    return result;
}

int Sleep(sqlite3_vfs*, int microseconds)
{
    waitedMicroseconds += microseconds;
    return microseconds;
}

sqlite3_vfs* Watched()
{
    static sqlite3_vfs watched;
    return &watched;
}
}  // namespace

StoreDisk::StoreDisk()
{
    disk = sqlite3_vfs_find(nullptr);
    growthsLeft = INT_MAX;
    waitedMicroseconds = 0;
    *Watched() = *disk;
    Watched()->zName = "watched";
    Watched()->szOsFile = static_cast<int>(sizeof(WatchedFile)) + disk->szOsFile;
    Watched()->xOpen = Open;
    Watched()->xSleep = Sleep;
    sqlite3_vfs_register(Watched(), 1);
}

StoreDisk::~StoreDisk()
{
    sqlite3_vfs_register(disk, 1);
    sqlite3_vfs_unregister(Watched());
}

void StoreDisk::FillUpAfter(int growths, int refusals)
{
    growthsLeft = growths;
    refusalsLeft = refusals;
}

int StoreDisk::WaitedMs() const
{
    return static_cast<int>(waitedMicroseconds / 1000);
}
