#include "dumpsig/key_file.h"

#include "backup_sign_lib/openssl_ptr.h"
#include "backup_sign_lib/rsa_keys.h"
#include "commons/errors/system_error.h"
#include "commons/panel/param_source.h"
#include "commons/panel/product_paths.h"
#include "dumpsig/command_line.h"
#include "dumpsig/input_file.h"
#include "dumpsig/output.h"

#include <openssl/err.h>
#include <openssl/pem.h>
#include <openssl/x509.h>

#include <iterator>
#include <optional>
#include <string_view>

namespace dumpsig {

namespace {

constexpr std::size_t kLargestKeyFile = 64 * 1024;

using OpenSslText = std::unique_ptr<char, decltype([](char* text) { OPENSSL_free(text); })>;
using EvpKeyPtr = std::unique_ptr<EVP_PKEY, decltype([](EVP_PKEY* key) { EVP_PKEY_free(key); })>;

std::string readText(const std::string& path) {
    if (path == kStandardStream) {
        BRASK_THROW(FileError, path, "standard input is no key file");
    }
    InputFile file(path);
    std::string text(kLargestKeyFile + 1, '\0');
    text.resize(file.readFully(text.data(), text.size()));
    if (text.size() > kLargestKeyFile) {
        BRASK_THROW(FileError, path, "is too long for a key file");
    }
    return text;
}

std::size_t countOf(std::string_view text, std::string_view word) {
    std::size_t count = 0;
    for (std::size_t at = text.find(word); at != std::string_view::npos; at = text.find(word, at + 1)) {
        ++count;
    }
    return count;
}

/// Looked for in the bytes, not in the blocks, so that a damaged one is found too.
bool holdsPrivateKey(std::string_view text) {
    for (std::size_t at = text.find("BEGIN "); at != std::string_view::npos;
         at = text.find("BEGIN ", at + 1)) {
        const std::string_view line = text.substr(at, text.find_first_of("\r\n", at) - at);
        if (line.find("PRIVATE KEY") != std::string_view::npos) {
            return true;
        }
    }
    return false;
}

/// A PEM block, decoded but not understood.
struct PemBlock {
    std::string name;
    brask::OpenSslBytes bytes;
    long size;
};

[[noreturn]] void failDamaged(const std::string& path) {
    ERR_clear_error();
    BRASK_THROW(FileError, path, "holds a damaged block");
}

/// The next block; nothing after the last, or for one that is damaged. The reader that asks for no password
/// is used on purpose: a key file must not make the program talk to a terminal.
std::optional<PemBlock> readBlock(BIO* text) {
    char* name = nullptr;
    char* header = nullptr;
    unsigned char* bytes = nullptr;
    long size = 0;
    const bool isRead = PEM_read_bio(text, &name, &header, &bytes, &size) == 1;
    const OpenSslText nameOwner(name);
    const OpenSslText headerOwner(header);
    brask::OpenSslBytes bytesOwner(bytes);
    if (isRead) {
        return PemBlock{.name = name, .bytes = std::move(bytesOwner), .size = size};
    }
    ERR_clear_error();
    return std::nullopt;
}

/// The key in a block, null when it is of another kind.
brask::RsaPtr readKey(const PemBlock& block, const std::string& path) {
    const unsigned char* at = block.bytes.get();
    brask::RsaPtr key;
    if (block.name == PEM_STRING_RSA_PUBLIC) {
        key.reset(d2i_RSAPublicKey(nullptr, &at, block.size));
    } else if (block.name == PEM_STRING_PUBLIC) {
        const EvpKeyPtr any(d2i_PUBKEY(nullptr, &at, block.size));
        if (any != nullptr && EVP_PKEY_get_base_id(any.get()) != EVP_PKEY_RSA) {
            return nullptr;
        }
        key.reset(any == nullptr ? nullptr : EVP_PKEY_get1_RSA(any.get()));
    } else if (block.name.find("CERTIFICATE") != std::string::npos) {
        BRASK_THROW(FileError, path, "holds a certificate, not a public key");
    } else {
        return nullptr;
    }
    if (key == nullptr || at != block.bytes.get() + block.size) {
        failDamaged(path);
    }
    return key;
}

/// Where the panel's runtime configuration says that the product lies, or the compiled default.
std::string publishedKeyFile() {
    static brask::ParamFromBSAStrategy configuration;
    brask::paramSource = &configuration;
    return brask::getProductRootDir() + "/admin/htdocs/bu_pubkey.txt";
}

std::vector<PublicKey> readPublishedKey() {
    const std::string path = publishedKeyFile();
    try {
        return readKeyFile(path);
    } catch (const brask::ExSystemError<ENOENT>&) {
        BRASK_THROW(FileError, path, "no such file, so there is no published key; name a key file with -k");
    }
}

} // namespace

std::vector<PublicKey> readKeyFile(const std::string& path) {
    const std::string text = readText(path);
    if (holdsPrivateKey(text)) {
        BRASK_THROW(FileError, path, "holds a private key; only public keys belong here");
    }
    const brask::BioPtr bio(BIO_new_mem_buf(text.data(), static_cast<int>(text.size())));
    std::vector<PublicKey> keys;
    std::size_t blocks = 0;
    while (const auto block = readBlock(bio.get())) {
        ++blocks;
        if (brask::RsaPtr key = readKey(*block, path)) {
            const std::string fingerprint = brask::keyFingerprint(key.get());
            keys.push_back({.key = std::move(key), .fingerprint = fingerprint, .file = path});
        }
    }
    // A damaged block has ended the reading or, without a proper first line, was passed over as text.
    if (countOf(text, "-----BEGIN ") != blocks || countOf(text, "-----END ") != blocks) {
        failDamaged(path);
    }
    if (keys.empty()) {
        BRASK_THROW(FileError, path, "holds no RSA public key");
    }
    return keys;
}

std::vector<PublicKey> readKeys(const std::vector<std::string>& paths) {
    if (paths.empty()) {
        return readPublishedKey();
    }
    std::vector<PublicKey> keys;
    for (const std::string& path : paths) {
        std::vector<PublicKey> more = readKeyFile(path);
        keys.insert(keys.end(), std::make_move_iterator(more.begin()), std::make_move_iterator(more.end()));
    }
    return keys;
}

} // namespace dumpsig
