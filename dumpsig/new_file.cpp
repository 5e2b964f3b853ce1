#include "dumpsig/new_file.h"

#include "commons/errors/format.h"
#include "commons/errors/system_error.h"
#include "dumpsig/output.h"

#include <filesystem>
#include <random>

#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>

namespace dumpsig {

namespace {

std::string folderOf(const std::string& path) {
    const std::filesystem::path folder = std::filesystem::path(path).parent_path();
    return folder.empty() ? "." : folder.string();
}

std::string nameBeside(const std::string& path) {
    std::random_device random;
    return brask::fmtlib::format("{}/.dumpsig-{:08x}{:08x}", folderOf(path), random(), random());
}

void checkPlace(const std::string& path, bool replace) {
    struct stat status = {};
    if (lstat(path.c_str(), &status) != 0) {
        return; // free, or opening the file beside it tells what is wrong
    }
    if (!replace) {
        BRASK_THROW(FileError, path, "exists; --force replaces it");
    }
    if (!S_ISREG(status.st_mode) && !S_ISLNK(status.st_mode)) {
        BRASK_THROW(FileError, path, "is neither a regular file nor a link, so it is not replaced");
    }
}

int createdFile(const std::string& temporaryPath, const std::string& path) {
    constexpr mode_t kUmaskLeaves = 0666;
    const int fd = open(temporaryPath.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kUmaskLeaves);
    if (fd == -1) {
        brask::throwSystemError(path, errno);
    }
    return fd;
}

void syncOrThrow(int fd, const std::string& path) {
    if (fsync(fd) != 0) {
        brask::throwSystemError(path, errno);
    }
}

void syncFolder(const std::string& path) {
    const Descriptor folder(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    // A folder that may be written need not be readable, and can't be synced then.
    if (folder.get() == -1 && errno == EACCES) {
        return;
    }
    if (folder.get() == -1) {
        brask::throwSystemError(path, errno);
    }
    syncOrThrow(folder.get(), path);
}

/// Gives a file its name, if nothing has it. Not every file system can do that in one step.
int renameToFreeName(const char* from, const char* to) {
    const int result = renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE);
    if (result == 0 || errno != EINVAL) {
        return result;
    }
    if (faccessat(AT_FDCWD, to, F_OK, AT_SYMLINK_NOFOLLOW) == 0) {
        errno = EEXIST;
        return -1;
    }
    return rename(from, to);
}

} // namespace

NewFile::NewFile(std::string path, bool replace, Attendant& attendant)
    : path((checkPlace(path, replace), std::move(path))), replace(replace), attendant(attendant),
      temporaryPath(nameBeside(this->path)),
      file((attendant.removeIfInterrupted(temporaryPath), createdFile(temporaryPath, this->path))) {}

NewFile::~NewFile() {
    if (!committed) {
        unlink(temporaryPath.c_str());
    }
    attendant.removeIfInterrupted({});
}

void NewFile::write(std::string_view bytes) const {
    writeAll(file.get(), bytes, path);
}

void NewFile::commit() {
    syncOrThrow(file.get(), path);
    const int result = replace ? rename(temporaryPath.c_str(), path.c_str())
                               : renameToFreeName(temporaryPath.c_str(), path.c_str());
    if (result != 0) {
        brask::throwSystemError(path, errno);
    }
    committed = true;
    syncFolder(folderOf(path));
}

} // namespace dumpsig
