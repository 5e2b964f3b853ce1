#include "commons/files/file_utils.h"

#include "commons/errors/system_error.h"
#include "commons/files/retry.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>

#include <strings.h>
#include <sys/vfs.h>
#include <unistd.h>

namespace brask {

namespace {

/// Cuts `path` at its last slash for the time of the step on its parent.
void makeDirStep(char* path, uid_t uid, gid_t gid, mode_t mode) {
    struct stat found = {};
    if (stat(path, &found) == 0 || errno != ENOENT) {
        return;
    }
    char* slash = rindex(path, '/');
    if (slash != nullptr && slash != path) {
        *slash = '\0';
        makeDirStep(path, uid, gid, mode);
        *slash = '/';
    }
    // Neither result counts: another process may have been faster, and the caller looks afterwards.
    static_cast<void>(mkdir(path, mode));
    [[maybe_unused]] const int ignored = chown(path, uid, gid);
}

/// One read(2). 0 is the end of file.
size_t readSome(int fd, char* buffer, size_t size) {
    const ssize_t got = TEMP_FAILURE_RETRY(read(fd, buffer, size));
    if (got == -1) {
        throwErrno("Unable to read data");
    }
    return static_cast<size_t>(got);
}

} // namespace

void RemoveFile(const std::filesystem::path& path) {
    retryFileOperation([&path] { std::filesystem::remove(path); });
}

void make_dir(const std::string& path, uid_t uid, gid_t gid, mode_t mode) {
    const std::shared_ptr<char> copy(strdup(path.c_str()), std::free);
    if (!copy) {
        BRASK_THROW(CantCreateDirectory, path, std::strerror(errno));
    }
    makeDirStep(copy.get(), uid, gid, mode);
}

void make_dir(const char* path, uid_t uid, gid_t gid, mode_t mode) {
    make_dir(std::string(path), uid, gid, mode);
}

unsigned long long getFreeSpace(const std::string& path) {
    struct statfs fileSystem {};

    if (statfs(path.c_str(), &fileSystem) != 0) {
        BRASK_THROW(CantStatFS, path, std::strerror(errno));
    }
    return static_cast<unsigned long long>(fileSystem.f_bsize) * fileSystem.f_bavail;
}

bool writeAll(int fd, const char* data, size_t size) {
    while (size > 0) {
        const ssize_t written = TEMP_FAILURE_RETRY(write(fd, data, size));
        if (written == -1) {
            return false;
        }
        data += written;
        size -= static_cast<size_t>(written);
    }
    return true;
}

void copyData(int from, int to) {
    std::array<char, 4096> buffer{};
    while (const size_t got = readSome(from, buffer.data(), buffer.size())) {
        if (!writeAll(to, buffer.data(), got)) {
            throwErrno("Unable to write data");
        }
    }
}

bool streamEquals(std::istream& stream, const std::string& expected) {
    stream.clear();
    if (!stream.seekg(0)) {
        throwErrno("Unable to set the position on the stream");
    }
    std::string start(expected.size(), '\0');
    stream.read(start.data(), static_cast<std::streamsize>(start.size()));
    if (stream.fail() && !stream.eof()) {
        throwErrno("Unable to read from the stream");
    }
    return stream.gcount() == static_cast<std::streamsize>(expected.size()) && start == expected;
}

struct stat statFile(const std::string& path) {
    struct stat result = {};
    if (stat(path.c_str(), &result) != 0) {
        throwErrno(fmtlib::format("Failed to stat the file '{}'", path));
    }
    return result;
}

std::time_t getModificationTime(const std::string& path) {
    return statFile(path).st_mtime;
}

} // namespace brask
