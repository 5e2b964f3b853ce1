#pragma once

#include "product/backup_restore_helper/descriptor.h"

#include <string>
#include <string_view>

#include <sys/types.h>

namespace backup_restore_helper {

/// An open folder, and the durable changes of what is in it. A Failure names the file's whole path.
class Folder final {
public:
    /// Opens the folder at `path`, or the one that a symbolic link there leads to.
    explicit Folder(std::string path);

    int get() const { return descriptor.get(); }

    std::string pathOf(const std::string& name) const { return path + "/" + name; }

    /// Makes a file of exactly this mode, whatever the umask, and brings it to the disk. Should there be one
    /// of that name, it goes first: it is what a killed writer has left.
    void write(const std::string& name, std::string_view text, mode_t mode) const;

    /// Gives one file the other one's place, all at once.
    void rename(const std::string& from, const std::string& to) const;

    void removeIfThere(const std::string& name) const;

    /// Brings to the disk which names there are.
    void sync() const;

private:
    const std::string path;
    const Descriptor descriptor;
};

/// Keeps other writers of a folder out, for as long as it lives.
class FolderLock final {
public:
    /// Makes the lock file `name` if need be, and waits until the lock is free.
    FolderLock(const Folder& folder, const std::string& name);

private:
    const Descriptor file;
};

} // namespace backup_restore_helper
