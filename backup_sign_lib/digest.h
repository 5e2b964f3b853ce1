#pragma once

#include <openssl/types.h>

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace brask {

/// The running SHA-1 of a dump. Every failure raises Error<&DigestCalculationError, ExDefault>.
///
/// Handed around by reference only: a copy shares the running state of its original. Not to be shared between
/// threads, not even to read the value.
class Digest {
public:
    Digest();

    /// Adds `size` bytes. Not to be called once the value has been read.
    void update(const void* data, size_t size);

    /// The final value, getSize() bytes that live as long as the object. The first call finishes the hash.
    const unsigned char* getValue() const;

    /// Length of the value in bytes.
    size_t getSize() const;

private:
    std::shared_ptr<EVP_MD_CTX> context;
    // Empty until the first getValue().
    mutable std::vector<unsigned char> value;
};

/// Empties OpenSSL's error queue: one line for each error, oldest first, each with a line end.
std::string getOpenSslErrors();

} // namespace brask
