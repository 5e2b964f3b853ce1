#include "lib/runtime/bsa_conf.h"

#include "lib/runtime/low_level_log.h"

#include <cstdlib>
#include <cstring>

#include <search.h>

namespace brask {

namespace {

constexpr int kStateLevel = 3;

BsaConf* bsaConf = nullptr;
const char* valueCache[kBsaConfRows]; // pointers into bsaConf's strings

int compareNameWithEntry(const void* name, const void* entry) {
    return strcmp(static_cast<const char*>(name), static_cast<const BsaConfEntry*>(entry)->name);
}

const BsaConfEntry* findSorted(const BsaConf& conf, const char* name) {
    size_t low = 0;
    size_t high = conf.count;
    while (low < high) {
        const size_t middle = (low + high) / 2;
        const int order = strcmp(name, conf.entries[middle].name);
        if (order == 0) {
            return &conf.entries[middle];
        }
        if (order < 0) {
            high = middle;
        } else {
            low = middle + 1;
        }
    }
    return nullptr;
}

const BsaConfEntry* find(const BsaConf& conf, const char* name) {
    if (conf.sorted != 0) {
        return findSorted(conf, name);
    }
    size_t count = conf.count;
    return static_cast<const BsaConfEntry*>(
        lfind(name, conf.entries, &count, sizeof(BsaConfEntry), compareNameWithEntry));
}

} // namespace

int bsaConfInit() {
    if (bsaConf != nullptr) {
        return 0;
    }
    auto* conf = static_cast<BsaConf*>(malloc(sizeof(BsaConf)));
    if (conf == nullptr) {
        logWrite(kStateLevel, "Not enough memory to allocate Brask runtime configuration structure");
        return -1;
    }
    *conf = BsaConf{};
    if (bsaConfLoad(BRASK_CONF_FILE, conf) != 0) {
        bsaConfFree(conf);
        return -1;
    }
    bsaConf = conf;
    return 0;
}

const char* bsaConfGet(const char* name) {
    if (bsaConf == nullptr && bsaConfInit() != 0) {
        return nullptr;
    }
    const BsaConfEntry* entry = find(*bsaConf, name);
    return entry != nullptr ? entry->value : nullptr;
}

const char* bsaConfGetCached(unsigned row) {
    if (valueCache[row] == nullptr) {
        valueCache[row] = bsaConfGet(bsaConfNames[row]);
    }
    return valueCache[row];
}

const char* bsaConfGetById(unsigned row) {
    const char* value = bsaConfGetCached(row);
    return value != nullptr ? value : bsaConfDefaults[row];
}

const char* bsaConfGetDefault(const char* name) {
    for (unsigned row = 0; row < kBsaConfRows - 1; ++row) {
        if (strcmp(name, bsaConfNames[row]) == 0) {
            return bsaConfGetById(row);
        }
    }
    logWrite(kStateLevel, "variable '%s' was found neither in %s, nor in compile-time defaults", name,
             BRASK_CONF_FILE);
    return nullptr;
}

} // namespace brask
