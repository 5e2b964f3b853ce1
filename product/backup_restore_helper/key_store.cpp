#include "product/backup_restore_helper/key_store.h"

#include "product/backup_restore_helper/descriptor.h"
#include "product/backup_restore_helper/failure.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

namespace backup_restore_helper {

namespace {

constexpr const char* pairName = "pair.pem";
constexpr const char* newPairName = "pair.pem.new";
constexpr const char* lockName = "lock";

bool isCutShort(std::string_view pair) {
    if (!pair.starts_with("-----BEGIN ")) {
        return false;
    }
    pair = pair.substr(0, pair.find_last_not_of('\n') + 1);
    const std::string_view lastLine = pair.substr(pair.rfind('\n') + 1);
    return !lastLine.starts_with("-----END ") || !lastLine.ends_with("-----");
}

/// What is wrong with `pair`, as the rest of a sentence about it, or null.
const char* findFault(std::string_view pair) {
    if (pair.empty()) {
        return "is empty";
    }
    if (pair.size() > KeyStore::maxPairSize) {
        return "is longer than 65536 bytes";
    }
    if (pair.find('\0') != std::string_view::npos) {
        return "holds a zero byte";
    }
    const size_t separator = pair.find("\n\n");
    if (separator == std::string_view::npos || separator == 0 ||
        pair.find_first_not_of('\n', separator) == std::string_view::npos) {
        return "is not two keys with two line feeds between them";
    }
    return isCutShort(pair) ? "is cut short" : nullptr;
}

void syncToDisk(int fd, const std::string& name) {
    if (fsync(fd) != 0) {
        failSystemCall("bring " + name + " to the disk");
    }
}

void lock(int fd, const std::string& name) {
    if (fd < 0 || TEMP_FAILURE_RETRY(flock(fd, LOCK_EX)) != 0) {
        failSystemCall("lock " + name);
    }
}

} // namespace

KeyStore::KeyStore(std::string folder) : folder(std::move(folder)) {}

std::string KeyStore::load() const {
    const std::string path = inFolder(pairName);
    // Without O_NONBLOCK, a FIFO of that name would hold the caller up for ever.
    const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    if (!file.isOpen() && errno == ENOENT) {
        throw Failure("No key pair is stored in " + folder);
    }

    struct stat status {};

    if (!file.isOpen() || fstat(file.get(), &status) != 0) {
        failSystemCall("open " + path);
    }
    if (!S_ISREG(status.st_mode)) {
        throw Failure(path + " is not a regular file");
    }
    std::string pair = readAtMost(file.get(), maxPairSize + 1, path);
    if (const char* fault = findFault(pair)) {
        throw Failure("The key pair in " + path + " " + fault);
    }
    return pair;
}

void KeyStore::store(std::string_view pair) const {
    if (const char* fault = findFault(pair)) {
        throw Failure(std::string("The new key pair ") + fault);
    }
    makeFolder();
    const Descriptor folderFile(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NOFOLLOW));
    if (!folderFile.isOpen()) {
        failSystemCall("open " + folder);
    }
    const Descriptor lockFile(
        openat(folderFile.get(), lockName, O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, S_IRUSR | S_IWUSR));
    lock(lockFile.get(), inFolder(lockName));

    try {
        writeNewFile(folderFile.get(), pair);
        if (renameat(folderFile.get(), newPairName, folderFile.get(), pairName) != 0) {
            failSystemCall("replace " + inFolder(pairName));
        }
    } catch (const Failure&) {
        unlinkat(folderFile.get(), newPairName, 0);
        throw;
    }
    syncToDisk(folderFile.get(), folder);
}

void KeyStore::makeFolder() const {
    if (mkdir(folder.c_str(), S_IRWXU) != 0) {
        if (errno != EEXIST) {
            failSystemCall("make " + folder);
        }
        return;
    }
    const std::string parent = folder.substr(0, folder.rfind('/') + 1);
    const Descriptor parentFile(open(parent.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    syncToDisk(parentFile.get(), parent);
}

void KeyStore::writeNewFile(int folderFd, std::string_view pair) const {
    const std::string path = inFolder(newPairName);
    // Under the lock a file of this name can only be what a killed writer left.
    if (unlinkat(folderFd, newPairName, 0) != 0 && errno != ENOENT) {
        failSystemCall("remove " + path);
    }
    const Descriptor file(openat(folderFd, newPairName, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW,
                                 S_IRUSR | S_IWUSR));
    if (!file.isOpen()) {
        failSystemCall("make " + path);
    }
    writeAll(file.get(), pair, path);
    syncToDisk(file.get(), path);
}

std::string KeyStore::inFolder(const char* name) const {
    return folder + "/" + name;
}

} // namespace backup_restore_helper
