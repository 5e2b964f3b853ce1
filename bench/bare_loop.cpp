// The least that hashing takes: digest updates, and nothing round them but what brings the bytes.
//
//     bare_loop --read FILE       reads a file block by block
//     bare_loop --map FILE        has the whole file mapped, so that nothing is copied
//     bare_loop --memory BYTES    takes as many bytes from one block that stays in the cache

#include <openssl/evp.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr std::size_t kBlockSize = 1 << 20; // as long as the blocks of backup_sign
constexpr std::size_t kInCache = kBlockSize / 8;

alignas(4096) char block[kBlockSize];

using Context = std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)>;

bool hashByReading(EVP_MD_CTX* context, const char* path) {
    const int file = open(path, O_RDONLY | O_CLOEXEC);
    ssize_t count = -1;
    while ((count = read(file, block, kBlockSize)) > 0) {
        EVP_DigestUpdate(context, block, static_cast<std::size_t>(count));
    }
    return count == 0;
}

bool hashMapped(EVP_MD_CTX* context, const char* path) {
    const int file = open(path, O_RDONLY | O_CLOEXEC);
    struct stat status = {};
    if (file < 0 || fstat(file, &status) != 0) {
        return false;
    }
    const auto size = static_cast<std::size_t>(status.st_size);
    const void* bytes = mmap(nullptr, size, PROT_READ, MAP_PRIVATE | MAP_POPULATE, file, 0);
    return bytes != MAP_FAILED && EVP_DigestUpdate(context, bytes, size) == 1;
}

bool hashFromCache(EVP_MD_CTX* context, const char* bytes) {
    const std::size_t wanted = std::strtoull(bytes, nullptr, 10);
    for (std::size_t done = 0; done < wanted; done += kInCache) {
        EVP_DigestUpdate(context, block, kInCache);
    }
    return wanted > 0;
}

bool hash(EVP_MD_CTX* context, const std::string& mode, const char* what) {
    if (mode == "--read") {
        return hashByReading(context, what);
    }
    if (mode == "--map") {
        return hashMapped(context, what);
    }
    return mode == "--memory" && hashFromCache(context, what);
}

} // namespace

int main(int argc, char** argv) {
    const Context context(EVP_MD_CTX_new(), EVP_MD_CTX_free);
    if (argc != 3 || EVP_DigestInit_ex(context.get(), EVP_sha1(), nullptr) != 1) {
        return 2;
    }
    if (!hash(context.get(), argv[1], argv[2])) {
        std::perror(argv[2]);
        return 1;
    }
    unsigned char digest[EVP_MAX_MD_SIZE];
    return EVP_DigestFinal_ex(context.get(), digest, nullptr) == 1 ? 0 : 1;
}
