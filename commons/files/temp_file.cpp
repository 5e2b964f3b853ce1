#include "commons/files/temp_file.h"

#include "commons/errors/format.h"
#include "commons/panel/param_source.h"
#include "commons/panel/product_paths.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

namespace brask {

namespace {

std::string defaultDirectory() {
    try {
        return getParam("DUMP_TMP_D");
    } catch (const ExTraceableBase<ExDefault>&) {
        return getBmmTmpDir();
    }
}

/// The path with its six places, ended by NUL, for mkstemp and mkdtemp to fill in.
std::vector<char> makeTemplate(const std::string& dir, const std::string& name, bool exactName) {
    std::string path = dir.empty() ? defaultDirectory() : dir;
    if (!path.ends_with('/')) {
        path += '/';
    }
    path += exactName ? name : "bmm-" + name + "-";
    path += "XXXXXX";

    std::vector<char> result;
    result.reserve(4096);
    result.assign(path.begin(), path.end());
    result.push_back('\0');
    return result;
}

/// Full file systems and quotas are fatal. Free space is not measured: a file needs one block at least.
void throwIfFull(const std::string& dir, int code) {
    if (code == ENOSPC || code == EDQUOT) {
        BRASK_THROW_AS(NotEnoughSpaceAt, ExFatal, dir, 0, 4096);
    }
}

std::string randomCharacters() {
    static const std::string alphabet = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ1234567890";
    std::string result;
    for (int i = 0; i < 6; ++i) {
        result += alphabet[static_cast<std::size_t>(rand()) % alphabet.size()];
    }
    return result;
}

} // namespace

std::pair<std::string, int> BMM_getTempFile(const std::string& dir, const std::string& name, bool exactName) {
    std::vector<char> path = makeTemplate(dir, name, exactName);
    const int fd = mkstemp(path.data());
    if (fd == -1) {
        const int code = errno;
        throwIfFull(dir, code);
        BRASK_THROW(CantCreateTempFile, path.data(), std::strerror(code));
    }
    return {path.data(), fd};
}

std::string BMM_getTempFileName(const std::string& dir, const std::string& name, bool exactName) {
    auto [path, fd] = BMM_getTempFile(dir, name, exactName);
    close(fd);
    return path;
}

std::pair<std::string, int> BMM_getTempFileAt(const std::string& dirPath, int dirFd,
                                              const std::string& name) {
    while (true) {
        const std::string filename = fmtlib::format("bmm-{}-{}", name, randomCharacters());
        const int fd = openat(dirFd, filename.c_str(), O_RDWR | O_CREAT | O_EXCL, 0600);
        if (fd >= 0) {
            return {filename, fd};
        }
        const int code = errno;
        throwIfFull(dirPath, code);
        if (code != EEXIST) {
            BRASK_THROW(CantCreateTempFile, dirPath + "/" + filename, std::strerror(code));
        }
    }
}

std::string BMM_makeTempFileDirectory(const std::string& dir, const std::string& name, bool exactName) {
    std::vector<char> path = makeTemplate(dir, name, exactName);
    if (mkdtemp(path.data()) == nullptr) {
        const int code = errno;
        throwIfFull(dir, code);
        BRASK_THROW(CantCreateTempDir, path.data(), std::strerror(code));
    }
    return path.data();
}

BMMTmpFile::BMMTmpFile(const std::string& dir, const std::string& name, bool removeOnClose)
    : name_(BMM_getTempFileName(dir, name, false)), removeOnClose_(removeOnClose) {
    open(name_, in | out | trunc | binary);
    if (fail()) {
        BRASK_THROW(CantCreateTempFile, name_, "Tmpfile failed");
    }
    setf(unitbuf);
}

BMMTmpFile::~BMMTmpFile() {
    if (removeOnClose_) {
        unlink(name_.c_str());
    }
}

} // namespace brask
