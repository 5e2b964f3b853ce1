#include "product/backup_restore_helper/published_key.h"

#include "product/backup_restore_helper/failure.h"
#include "product/backup_restore_helper/folder.h"

namespace backup_restore_helper {

namespace {

std::string publishedText(const std::string& publicKey) {
    if (!publicKey.starts_with("-----BEGIN ")) {
        throw Failure("The current public key is not PEM");
    }
    return "Public key which may be used to verify dumps made from this host\n\n" + publicKey + "\n";
}

} // namespace

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
