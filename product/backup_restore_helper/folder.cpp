#include "product/backup_restore_helper/folder.h"

#include "product/backup_restore_helper/failure.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

namespace backup_restore_helper {

namespace {

void syncToDisk(int fd, const std::string& name) {
    if (fsync(fd) != 0) {
        failSystemCall("bring " + name + " to the disk");
    }
}

} // namespace

Folder::Folder(std::string path)
    : path(std::move(path)), descriptor(open(this->path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
    if (!descriptor.isOpen()) {
        failSystemCall("open " + this->path);
    }
}

void Folder::write(const std::string& name, std::string_view text, mode_t mode) const {
    removeIfThere(name);
    const std::string filePath = pathOf(name);
    const Descriptor file(
        openat(get(), name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR));
    if (!file.isOpen() || fchmod(file.get(), mode) != 0) {
        failSystemCall("make " + filePath);
    }
    writeAll(file.get(), text, filePath);
    syncToDisk(file.get(), filePath);
}

void Folder::rename(const std::string& from, const std::string& to) const {
    if (renameat(get(), from.c_str(), get(), to.c_str()) != 0) {
        failSystemCall("replace " + pathOf(to));
    }
}

void Folder::removeIfThere(const std::string& name) const {
    if (unlinkat(get(), name.c_str(), 0) != 0 && errno != ENOENT) {
        failSystemCall("remove " + pathOf(name));
    }
}

void Folder::sync() const {
    syncToDisk(get(), path);
}

FolderLock::FolderLock(const Folder& folder, const std::string& name)
    // Through a link, a file would be made elsewhere.
    : file(openat(folder.get(), name.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, S_IRUSR | S_IWUSR)) {
    if (!file.isOpen() || TEMP_FAILURE_RETRY(flock(file.get(), LOCK_EX)) != 0) {
        failSystemCall("lock " + folder.pathOf(name));
    }
}

} // namespace backup_restore_helper
