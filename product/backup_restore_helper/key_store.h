#pragma once

#include <string>
#include <string_view>

namespace backup_restore_helper {

/// The server's key pair on disk: one file of mode 0600 in a folder of mode 0700.
///
/// The file is only ever replaced whole, by a rename, so a reader needs no lock and sees either the old pair
/// or the new one, also when a writer is killed or the machine stops. Writers take turns through a lock file.
///
/// A pair is the private key's text, two line feeds and the public key's text. Nothing more is asked of it,
/// except that a pair which begins as PEM must also end as PEM: a caller that dies in the middle of handing
/// over a new pair must not cost the server its old one.
class KeyStore final {
public:
    static constexpr size_t maxPairSize = 65536;

    /// `folder` is made by the first `store`; the folder that it stands in must exist.
    explicit KeyStore(std::string folder);

    /// The stored pair, byte for byte. Raises Failure when there is none, or none that can be read or used.
    std::string load() const;

    /// Replaces the stored pair. Raises Failure when `pair` is not one, or when it could not be stored; the
    /// old pair then stands as it was, unless it was only the last step, bringing the folder to the disk,
    /// that failed.
    void store(std::string_view pair) const;

private:
    void makeFolder() const;
    void writeNewFile(int folderFd, std::string_view pair) const;
    std::string inFolder(const char* name) const;

    const std::string folder;
};

} // namespace backup_restore_helper
