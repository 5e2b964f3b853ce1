// Any file loads, whatever its lines hold.

#include "lib/runtime/bsa_conf.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include <sys/mman.h>
#include <unistd.h>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const int fd = memfd_create("bsa.conf", 0);
    static const std::string path = "/proc/self/fd/" + std::to_string(fd);
    if (ftruncate(fd, 0) != 0 || pwrite(fd, data, size, 0) != static_cast<ssize_t>(size)) {
        std::abort();
    }
    auto* conf = static_cast<brask::BsaConf*>(std::calloc(1, sizeof(brask::BsaConf)));
    if (brask::bsaConfLoad(path.c_str(), conf) != 0) {
        std::abort();
    }
    // Not by bsaConfFree: it walks all slots, and those beyond the first array hold anything until they are
    // used.
    for (std::size_t i = 0; i < conf->count; ++i) {
        std::free(conf->entries[i].name);
        std::free(conf->entries[i].value);
    }
    std::free(conf->entries);
    std::free(conf);
    return 0;
}
