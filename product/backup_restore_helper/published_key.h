#pragma once

#include "product/backup_restore_helper/key_store.h"

#include <string>

namespace backup_restore_helper {

/// Writes the current public key to "bu_pubkey.txt" in `folder`, in the form in which the tool publishes a
/// new one. The file is replaced whole and gets `mode`. Raises Failure when there is no current pair, its
/// public key is not PEM, or the file can't be written; an old file is unchanged then.
void publishKey(const KeyStore& keyStore, const std::string& folder, mode_t mode);

} // namespace backup_restore_helper
