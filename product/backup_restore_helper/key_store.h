#pragma once

#include "product/backup_restore_helper/folder.h"
#include "product/backup_restore_helper/key_pair.h"

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <time.h>

namespace backup_restore_helper {

using ArchiveTime = std::chrono::sys_time<std::chrono::microseconds>;

/// The name of the pair that was replaced at that moment: "pair.pem.20260131T235959.123456Z", in UTC, so that
/// the names sort by time.
std::string archiveName(ArchiveTime replaced);

/// Whether `name` is such a name, and thus no path and none of the store's other files.
bool isArchiveName(std::string_view name);

/// The server's key pair on disk, and the pairs that it has replaced: one file of mode 0600 each, in a folder
/// of mode 0700.
///
/// The current pair is only ever replaced whole, by a rename, and never before the one that it replaces is
/// on the disk under an archive's name. So a reader needs no lock and sees either the old pair or the new
/// one, also when a writer is killed or the machine stops. Nothing that was current is ever removed, read or
/// unreadable. Writers take turns through a lock file.
class KeyStore final {
public:
    struct Entry {
        std::string name;
        bool isCurrent;
        /// Since when the pair is, or was, the current one.
        time_t since;
        /// Nothing when the file holds no pair, or can't be read.
        std::optional<KeyPair> pair;
    };

    /// `path` is made by the first writer; its parent folder must exist.
    explicit KeyStore(std::string path);

    /// The current pair, also through a symbolic link. Raises Failure when there is none, or none that
    /// can be read and used. What may be over in a moment is waited for, for a tenth of a second: the caller
    /// takes a failure for the loss of the pair, and makes a new one.
    KeyPair load() const;

    /// Makes `text` the current pair, byte for byte. Raises Failure when it is no pair, or can't be stored,
    /// or the present one can't be kept; the present pair then stays current, unless it was only the last
    /// step, bringing the folder to the disk, that failed.
    void store(std::string_view text) const;

    /// Makes the archived pair of this name the current one, as `store` does; it stays in the archive.
    void restore(const std::string& name) const;

    /// The current pair, if any, and then the archived ones, the last one replaced first.
    std::vector<Entry> list() const;

    /// Keeps all writers out. Raises Failure when there is no store.
    FolderLock lock() const;

private:
    KeyPair parse(const std::string& name) const;
    Entry describe(const std::string& name) const;
    void makeFolder() const;
    void replaceCurrent(std::string_view text) const;
    std::string pathOf(const std::string& name) const;

    const std::string path;
};

/// Writes the current public key to "bu_pubkey.txt" in `folder`, in the form in which the tool publishes a
/// new one. The file is replaced whole and gets `mode`. Raises Failure when there is no current pair, its
/// public key is not PEM, or the file can't be written; an old file is unchanged then.
void publishKey(const KeyStore& keyStore, const std::string& folder, mode_t mode);

} // namespace backup_restore_helper
