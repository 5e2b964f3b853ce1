#include "product/backup_restore_helper/key_pair.h"

#include "product/backup_restore_helper/failure.h"

#include <openssl/evp.h>
#include <openssl/sha.h>
#include <openssl/x509.h>

#include <memory>
#include <vector>

#include <dlfcn.h>

namespace backup_restore_helper {

namespace {

constexpr std::string_view blockBegin = "-----BEGIN ";
constexpr std::string_view blockEnd = "-----END ";
constexpr std::string_view dashes = "-----";

std::string_view withoutBlanks(std::string_view line) {
    constexpr std::string_view blanks = " \t\v\f";
    const size_t begin = line.find_first_not_of(blanks);
    return begin == std::string_view::npos ? ""
                                           : line.substr(begin, line.find_last_not_of(blanks) + 1 - begin);
}

/// The lines that are not empty, without the blanks round them.
std::vector<std::string_view> linesOf(std::string_view text) {
    constexpr std::string_view byteOrderMark = "\xef\xbb\xbf";
    if (text.starts_with(byteOrderMark)) {
        text.remove_prefix(byteOrderMark.size());
    }
    std::vector<std::string_view> lines;
    while (!text.empty()) {
        const size_t length = std::min(text.find_first_of("\r\n"), text.size());
        if (const std::string_view line = withoutBlanks(text.substr(0, length)); !line.empty()) {
            lines.push_back(line);
        }
        text.remove_prefix(std::min(length + 1, text.size()));
    }
    return lines;
}

/// The first whole block whose label ends in `kind`, or nothing. A block in which another begins is not
/// whole.
std::string findBlock(const std::vector<std::string_view>& lines, std::string_view kind) {
    std::string block;
    std::string lastLine;
    for (const std::string_view line : lines) {
        if (line.starts_with(blockBegin)) {
            const bool wanted = line.ends_with(std::string(kind).append(dashes));
            block.clear();
            lastLine = wanted ? std::string(blockEnd).append(line.substr(blockBegin.size())) : "";
        }
        if (lastLine.empty()) {
            continue;
        }
        block.append(line).append("\n");
        if (line == lastLine) {
            return block;
        }
    }
    return "";
}

KeyPair parseBlocks(std::string_view text, const std::string& name) {
    const std::vector<std::string_view> lines = linesOf(text);
    KeyPair pair{findBlock(lines, "PRIVATE KEY"), findBlock(lines, "PUBLIC KEY")};
    if (pair.privateKey.empty() || pair.publicKey.empty()) {
        throw Failure(name + " holds no whole " + (pair.privateKey.empty() ? "private" : "public") + " key");
    }
    return pair;
}

std::string withPlainLineFeeds(std::string_view text) {
    std::string plain(text);
    for (size_t end = 0; (end = plain.find("\r\n", end)) != std::string::npos;) {
        plain.erase(end, 1);
    }
    return plain;
}

KeyPair parseHalves(std::string_view text, const std::string& name) {
    constexpr const char* separator = "\n\n";
    const std::string plain =
        text.find(separator) == std::string_view::npos ? withPlainLineFeeds(text) : std::string(text);
    const size_t end = plain.find(separator);
    if (end == std::string::npos || end == 0 || plain.find_first_not_of('\n', end) == std::string::npos) {
        throw Failure(name + " is not two keys with two line feeds between them");
    }
    return {plain.substr(0, end), plain.substr(end + 2)};
}

#define TEXT_OF_VALUE(value) #value
#define TEXT_OF(macro) TEXT_OF_VALUE(macro)
// NOLINTBEGIN(bugprone-macro-parentheses): a name that is declared takes none.
#define IMPORT(function)                                                                                     \
    const decltype(&::function) function = reinterpret_cast<decltype(&::function)>(find(#function))

// NOLINTEND(bugprone-macro-parentheses)

/// Libcrypto, loaded on demand: the tool waits for the helper in each of its runs, and loading the library
/// takes longer than all that the helper does for it. It stays loaded to the end of the process.
class Libcrypto final {
public:
    Libcrypto() {
        // A configuration file could load code of the caller's choice.
        OPENSSL_init_crypto(OPENSSL_INIT_NO_LOAD_CONFIG, nullptr);
    }

private:
    static constexpr const char* name = "libcrypto.so." TEXT_OF(OPENSSL_SHLIB_VERSION);

    static void* orFail(void* address) {
        if (address == nullptr) {
            throw Failure(std::string("Can't compute fingerprints: ") + dlerror());
        }
        return address;
    }

    void* find(const char* function) const { return orFail(dlsym(library, function)); }

    void* const library = orFail(dlopen(name, RTLD_NOW | RTLD_LOCAL));

public:
    IMPORT(OPENSSL_init_crypto);
    IMPORT(EVP_DecodeBlock);
    IMPORT(EVP_EncodeBlock);
    IMPORT(EVP_Digest);
    IMPORT(EVP_sha256);
    IMPORT(EVP_PKEY_free);
    IMPORT(d2i_PublicKey);
    IMPORT(d2i_PUBKEY);
    IMPORT(i2d_PUBKEY);
};

using Bytes = std::vector<unsigned char>;

const unsigned char* bytesOf(const std::string& text) {
    return reinterpret_cast<const unsigned char*>(text.data());
}

/// The content of a PEM block, with up to two bytes too many after it, or nothing.
Bytes decodeBlock(const Libcrypto& crypto, const std::string& block) {
    std::string base64;
    for (size_t begin = block.find('\n') + 1; begin < block.rfind("-----END ");) {
        const size_t end = block.find('\n', begin);
        base64.append(block, begin, end - begin);
        begin = end + 1;
    }
    Bytes content(base64.size());
    const int size = crypto.EVP_DecodeBlock(content.data(), bytesOf(base64), static_cast<int>(base64.size()));
    content.resize(size < 0 ? 0 : static_cast<size_t>(size));
    return content;
}

/// The SubjectPublicKeyInfo of the key in a PEM block, or nothing.
Bytes keyInfoOf(const Libcrypto& crypto, const std::string& block) {
    const Bytes content = decodeBlock(crypto, block);
    const unsigned char* next = content.data();
    const auto size = static_cast<long>(content.size());
    const bool isPkcs1 = block.starts_with("-----BEGIN RSA PUBLIC KEY-----");
    const std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)> key(
        isPkcs1 ? crypto.d2i_PublicKey(EVP_PKEY_RSA, nullptr, &next, size)
                : crypto.d2i_PUBKEY(nullptr, &next, size),
        crypto.EVP_PKEY_free);
    if (!key) {
        return {};
    }
    Bytes info(static_cast<size_t>(std::max(crypto.i2d_PUBKEY(key.get(), nullptr), 0)));
    unsigned char* out = info.data();
    crypto.i2d_PUBKEY(key.get(), &out);
    return info;
}

} // namespace

KeyPair parseKeyPair(std::string_view text, const std::string& name) {
    if (text.empty()) {
        throw Failure(name + " is empty");
    }
    if (text.size() > KeyPair::maxSize) {
        throw Failure(name + " is longer than " + std::to_string(KeyPair::maxSize) + " bytes");
    }
    KeyPair pair =
        text.find(blockBegin) != std::string_view::npos ? parseBlocks(text, name) : parseHalves(text, name);
    if (pair.wireForm().find('\0') != std::string::npos) {
        throw Failure(name + " holds a zero byte");
    }
    return pair;
}

std::optional<std::string> fingerprintOf(const std::string& publicKey) {
    static const Libcrypto crypto;
    if (!publicKey.starts_with("-----BEGIN ")) {
        return std::nullopt;
    }
    const Bytes info = keyInfoOf(crypto, publicKey);
    unsigned char digest[SHA256_DIGEST_LENGTH];
    if (info.empty() ||
        crypto.EVP_Digest(info.data(), info.size(), digest, nullptr, crypto.EVP_sha256(), nullptr) != 1) {
        return std::nullopt;
    }
    unsigned char base64[sizeof digest / 3 * 4 + 5];
    const int size = crypto.EVP_EncodeBlock(base64, digest, sizeof digest);
    std::string text = "SHA256:" + std::string(base64, base64 + size);
    text.erase(text.find_last_not_of('=') + 1);
    return text;
}

} // namespace backup_restore_helper
