#pragma once

#include <openssl/types.h>

#include <memory>
#include <string>
#include <vector>

namespace dumpsig {

/// A public key that a dump may be signed with.
struct PublicKey {
    std::shared_ptr<RSA> key;
    std::string fingerprint;
    /// The file that it comes from, as given.
    std::string file;
};

/// The RSA public keys in a file, in order: PEM in either form, with any text around. Raises SystemError, and
/// FileError for a file that holds none, that has more than 64 KiB, or that holds what must not be there: a
/// private key, a certificate, or a block that can't be read. Keys of other kinds are passed over.
std::vector<PublicKey> readKeyFile(const std::string& path);

/// The keys of all files or, when none is given, those that the local product publishes.
std::vector<PublicKey> readKeys(const std::vector<std::string>& paths);

} // namespace dumpsig
