#pragma once

#include <string>

#include "FileHandle.h"

/// True where anyone may create files: what lies there may be somebody else's.
bool IsWorldWritable(const std::string& folder);

/// The folder that @p path stands in.
std::string FolderOf(const std::string& path);

/// Makes what was created or replaced in @p folder durable. False and errno on failure.
bool SyncFolder(const std::string& folder);

/// A file that is written beside the one that it is going to replace, under a name that nobody else has. It is locked
/// while it is at work: one that is not was left behind by a process that was killed, and goes when the next file is
/// begun in its folder. All paths are real ones.
class UnfinishedFile
{
public:
    /// Not open, and errno set, when it could not be created in @p folder.
    explicit UnfinishedFile(const std::string& folder);
    ~UnfinishedFile();  // removes it unless it has taken its place
    UnfinishedFile(const UnfinishedFile&) = delete;
    UnfinishedFile& operator=(const UnfinishedFile&) = delete;

    const FileHandle& File() const { return file_; }
    const std::string& Path() const { return path_; }

    /// False and errno on failure.
    bool TakePlaceOf(const std::string& target);

private:
    bool Create(const std::string& folder);
    bool IsKept() const;

    std::string path_;
    FileHandle file_;
    bool finished_ = false;
};
