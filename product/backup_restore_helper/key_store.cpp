#include "product/backup_restore_helper/key_store.h"

#include "product/backup_restore_helper/failure.h"
#include "product/backup_restore_helper/folder.h"

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <filesystem>

#include <fcntl.h>
#include <sys/stat.h>

namespace backup_restore_helper {

namespace {

constexpr const char* currentName = "pair.pem";
constexpr const char* newName = "pair.pem.new";
constexpr const char* copyName = "pair.pem.copy";
constexpr const char* lockName = "lock";

/// The content of a regular file, up to one byte more than a pair may have.
std::string readRegularFile(const std::string& path) {
    // Without O_NONBLOCK, a FIFO of that name would hold the caller up for ever.
    const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!file.isOpen() && errno == ENOENT) {
        throw Failure("No key pair is stored as " + path);
    }
    struct stat status = {};
    if (!file.isOpen() || fstat(file.get(), &status) != 0) {
        failSystemCall("open " + path);
    }
    if (!S_ISREG(status.st_mode)) {
        throw Failure(path + " is not a regular file");
    }
    return readAtMost(file.get(), KeyPair::maxSize + 1, path);
}

/// Copies what the link `currentName` leads to. False if it can't be read, or is too long to be a pair.
bool copyCurrent(const Folder& folder) {
    struct stat status = {};
    try {
        const std::string content = readRegularFile(folder.pathOf(currentName));
        if (content.size() > KeyPair::maxSize || fstatat(folder.get(), currentName, &status, 0) != 0) {
            return false;
        }
        folder.write(copyName, content, S_IRUSR | S_IWUSR);
    } catch (const Failure&) {
        return false;
    }
    const timespec times[] = {status.st_atim, status.st_mtim};
    return utimensat(folder.get(), copyName, times, 0) == 0;
}

void linkIntoArchive(const Folder& folder, const char* name) {
    auto now = std::chrono::floor<std::chrono::microseconds>(std::chrono::system_clock::now());
    while (linkat(folder.get(), name, folder.get(), archiveName(now).c_str(), 0) != 0) {
        if (errno != EEXIST) {
            failSystemCall("keep " + folder.pathOf(name) + " as " + archiveName(now));
        }
        ++now;
    }
}

/// Gives the current pair an archive's name as well. It is not read for that, so it is kept in whatever state
/// it is. Only a link's target is copied, as it is beyond the store's reach, and the link itself kept where
/// that fails.
void archiveCurrent(const Folder& folder) {
    struct stat status = {};
    if (fstatat(folder.get(), currentName, &status, AT_SYMLINK_NOFOLLOW) != 0) {
        if (errno == ENOENT) {
            return;
        }
        failSystemCall("look at " + folder.pathOf(currentName));
    }
    if (S_ISREG(status.st_mode) && fchmodat(folder.get(), currentName, S_IRUSR | S_IWUSR, 0) != 0) {
        failSystemCall("change the mode of " + folder.pathOf(currentName));
    }
    const bool isCopied = S_ISLNK(status.st_mode) && copyCurrent(folder);
    linkIntoArchive(folder, isCopied ? copyName : currentName);
    folder.removeIfThere(copyName);
}

/// What a killed or failed writer has left.
void removeTemporaries(const Folder& folder) {
    folder.removeIfThere(newName);
    folder.removeIfThere(copyName);
}

/// When the file, or else the link that leads nowhere, was written.
time_t writeTime(const std::string& path) {
    struct stat status = {};
    if (stat(path.c_str(), &status) != 0 && lstat(path.c_str(), &status) != 0) {
        failSystemCall("look at " + path);
    }
    return status.st_mtim.tv_sec;
}

constexpr std::string_view archivePrefix = "pair.pem.";

std::string publishedText(const std::string& publicKey) {
    if (!publicKey.starts_with("-----BEGIN ")) {
        throw Failure("The current public key is not PEM");
    }
    return "Public key which may be used to verify dumps made from this host\n\n" + publicKey + "\n";
}

} // namespace

KeyStore::KeyStore(std::string path) : path(std::move(path)) {}

KeyPair KeyStore::load() const {
    constexpr int attempts = 3;
    constexpr useconds_t pause = 50000;
    for (int attempt = 1;; ++attempt) {
        try {
            return parse(currentName);
        } catch (const SystemFailure&) {
            if (attempt == attempts) {
                throw;
            }
        }
        usleep(pause);
    }
}

void KeyStore::store(std::string_view text) const {
    parseKeyPair(text, "The new key pair");
    replaceCurrent(text);
}

void KeyStore::restore(const std::string& name) const {
    if (!isArchiveName(name)) {
        throw Failure(name + " is not the name of an archived key pair");
    }
    const std::string text = readRegularFile(pathOf(name));
    parseKeyPair(text, pathOf(name));
    replaceCurrent(text);
}

std::vector<KeyStore::Entry> KeyStore::list() const {
    std::vector<std::string> names;
    if (std::filesystem::exists(path)) {
        for (const auto& file : std::filesystem::directory_iterator(path)) {
            names.push_back(file.path().filename());
        }
    }
    std::erase_if(names, [](const auto& name) { return name != currentName && !isArchiveName(name); });
    std::sort(names.begin(), names.end(), std::greater<>());
    // Each archive's name begins with the current pair's, which thus came out last.
    if (!names.empty() && names.back() == currentName) {
        std::rotate(names.begin(), names.end() - 1, names.end());
    }
    std::vector<Entry> entries;
    entries.reserve(names.size());
    for (const std::string& name : names) {
        entries.push_back(describe(name));
    }
    return entries;
}

FolderLock KeyStore::lock() const {
    return FolderLock(Folder(path), lockName);
}

KeyPair KeyStore::parse(const std::string& name) const {
    return parseKeyPair(readRegularFile(pathOf(name)), pathOf(name));
}

KeyStore::Entry KeyStore::describe(const std::string& name) const {
    Entry entry{name, name == currentName, writeTime(pathOf(name)), std::nullopt};
    try {
        entry.pair = parse(name);
    } catch (const Failure&) {
        // What can't be used is listed all the same: it may be mended by hand.
    }
    return entry;
}

void KeyStore::makeFolder() const {
    if (mkdir(path.c_str(), S_IRWXU) == 0) {
        Folder(path.substr(0, path.rfind('/') + 1)).sync();
    } else if (errno != EEXIST) {
        failSystemCall("make " + path);
    }
}

void KeyStore::replaceCurrent(std::string_view text) const {
    makeFolder();
    const Folder folder(path);
    const FolderLock lock(folder, lockName);
    removeTemporaries(folder);
    try {
        folder.write(newName, text, S_IRUSR | S_IWUSR);
        archiveCurrent(folder);
        // The archive is on the disk before the current pair's own name is given to another.
        folder.sync();
        folder.rename(newName, currentName);
    } catch (const Failure&) {
        removeTemporaries(folder);
        throw;
    }
    folder.sync();
}

std::string KeyStore::pathOf(const std::string& name) const {
    return path + "/" + name;
}

std::string archiveName(ArchiveTime replaced) {
    const auto seconds = std::chrono::floor<std::chrono::seconds>(replaced);
    const time_t second = seconds.time_since_epoch().count();
    char text[64];
    tm fields{};
    size_t length = strftime(text, sizeof text, "%Y%m%dT%H%M%S", gmtime_r(&second, &fields));
    length += static_cast<size_t>(std::snprintf(text + length, sizeof text - length, ".%06dZ",
                                                static_cast<int>((replaced - seconds).count())));
    return std::string(archivePrefix).append(text, length);
}

bool isArchiveName(std::string_view name) {
    return name.starts_with(archivePrefix) && name.size() > archivePrefix.size() &&
           name.find_first_not_of("0123456789TZ.", archivePrefix.size()) == std::string_view::npos;
}

void publishKey(const KeyStore& keyStore, const std::string& folderPath, mode_t mode) {
    constexpr const char* name = "bu_pubkey.txt";
    constexpr const char* newName = "bu_pubkey.txt.new";
    // Without a pair there may be no store either, so this comes first for the sake of its message.
    keyStore.load();
    const FolderLock lock = keyStore.lock();
    const Folder folder(folderPath);
    try {
        folder.write(newName, publishedText(keyStore.load().publicKey), mode);
        folder.rename(newName, name);
    } catch (const Failure&) {
        folder.removeIfThere(newName);
        throw;
    }
    folder.sync();
}

} // namespace backup_restore_helper
