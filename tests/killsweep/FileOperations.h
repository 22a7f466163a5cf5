#pragma once

/// Counts what this program and its libraries change in the file system, and ends the process before one of these
/// changes, as a power cut would. The calls of libc that change files are defined by the program itself, so that all
/// its libraries, the database's too, go through the count.
namespace FileOperations
{
/// From now on counts into @p counter, and kills the process before operation number @p killBefore (from 1; 0: never).
void Watch(int* counter, int killBefore);
}  // namespace FileOperations
