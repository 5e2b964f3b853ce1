#include "lib/runtime/bsa_conf_load.h"

#include "lib/runtime/low_level_log.h"

#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <search.h>

namespace brask {

namespace {

constexpr size_t kInitialCapacity = 20;
constexpr int kFileLevel = 12;

bool isSpace(char c) {
    return isspace(static_cast<unsigned char>(c)) != 0;
}

bool isNameCharacter(char c) {
    return isalnum(static_cast<unsigned char>(c)) != 0 || c == '_';
}

int compareNames(const void* left, const void* right) {
    return strcmp(static_cast<const BsaConfEntry*>(left)->name,
                  static_cast<const BsaConfEntry*>(right)->name);
}

int makeFirstArray(BsaConf* conf) {
    conf->entries = static_cast<BsaConfEntry*>(calloc(kInitialCapacity, sizeof(BsaConfEntry)));
    conf->count = 0;
    conf->sorted = 1;
    if (conf->entries == nullptr) {
        conf->capacity = 0;
        errno = ENOMEM;
        return -1;
    }
    conf->capacity = kInitialCapacity;
    return 0;
}

/// Makes sure that one more entry fits. Returns 0, or -1 with errno set to ENOMEM.
int makeRoom(BsaConf* conf) {
    if (conf->entries == nullptr) {
        return makeFirstArray(conf);
    }
    if (conf->count < conf->capacity) {
        return 0;
    }
    size_t capacity = conf->capacity * 2;
    if (capacity <= conf->count) {
        capacity = conf->count + kInitialCapacity;
    }
    // The new slots are not cleared: each is written when it is taken into use.
    void* grown = reallocarray(conf->entries, capacity, sizeof(BsaConfEntry));
    if (grown == nullptr) {
        logWrite(kFileLevel, "Unable to read configuration: %s", strerror(ENOMEM));
        errno = ENOMEM;
        return -1;
    }
    conf->entries = static_cast<BsaConfEntry*>(grown);
    conf->capacity = capacity;
    return 0;
}

/// Adds the pair, or replaces the value of a name that is there. Returns 0, or -1 with errno set to ENOMEM.
int store(BsaConf* conf, const char* name, const char* value) {
    if (makeRoom(conf) != 0) {
        return -1;
    }
    BsaConfEntry entry{strdup(name), strdup(value)};
    if (entry.name == nullptr || entry.value == nullptr) {
        logWrite(kFileLevel, "Unable to form configuration: %s", strerror(ENOMEM));
        free(entry.name);
        free(entry.value);
        errno = ENOMEM;
        return -1;
    }
    const size_t before = conf->count;
    auto* found = static_cast<BsaConfEntry*>(
        lsearch(&entry, conf->entries, &conf->count, sizeof(BsaConfEntry), compareNames));
    if (conf->count != before) {
        conf->sorted = 0;
        return 0;
    }
    free(found->value);
    found->value = entry.value;
    free(entry.name);
    return 0;
}

/// Where the value that begins at `value` ends: at a comment or at the end of the line, less one trailing
/// white space character. A second white space character in a row takes the mark back, so a value followed by
/// a blank and the line feed keeps both. Readers of the file have come to rely on the values that this gives.
char* endOfValue(char* value) {
    char* mark = nullptr;
    char* at = value + 1;
    for (; *at != '\0' && *at != '#'; ++at) {
        mark = mark == nullptr && isSpace(*at) ? at : nullptr;
    }
    return mark != nullptr ? mark : at;
}

/// Takes one line, which is changed. A line that can't be read is logged and skipped. Returns what store
/// returns.
int takeLine(BsaConf* conf, char* line) {
    char* name = line;
    while (isSpace(*name)) {
        ++name;
    }
    if (*name == '\0' || *name == '#') {
        return 0;
    }
    char* nameEnd = name;
    while (isNameCharacter(*nameEnd)) {
        ++nameEnd;
    }
    if (nameEnd == name || !isSpace(*nameEnd)) {
        logWrite(kFileLevel, "Invalid variable definition %s\nExpected a space after variable name\n", name);
        return 0;
    }
    char* value = nameEnd;
    while (isSpace(*value)) {
        ++value;
    }
    if (*value == '\0' || *value == '#') {
        logWrite(kFileLevel, "Invalid variable definition %s\nExpected a value", name);
        return 0;
    }
    *endOfValue(value) = '\0';
    *nameEnd = '\0';
    return store(conf, name, value);
}

int takeLines(BsaConf* conf, FILE* file) {
    char* line = nullptr;
    size_t size = 0;
    int result = 0;
    while (result == 0 && getdelim(&line, &size, '\n', file) != -1) {
        result = takeLine(conf, line);
    }
    const int error = errno;
    free(line);
    errno = error;
    return result;
}

} // namespace

int bsaConfLoad(const char* path, BsaConf* conf) {
    if (makeRoom(conf) != 0) {
        return -1;
    }
    FILE* file = fopen(path, "rt");
    if (file == nullptr) {
        const int error = errno;
        logWrite(kFileLevel, "unable to open configuration file %s: %s\n", path, strerror(error));
        errno = error;
        return -1;
    }
    const int taken = takeLines(conf, file);
    const int error = errno;
    const bool complete = feof(file) != 0;
    fclose(file);
    if (taken != 0) {
        errno = error;
        return -1;
    }
    if (conf->sorted == 0) {
        qsort(conf->entries, conf->count, sizeof(BsaConfEntry), compareNames);
        conf->sorted = 1;
    }
    if (complete) {
        return 0;
    }
    logWrite(kFileLevel, "Unable to read configuration file: %s", strerror(error));
    errno = error;
    return -1;
}

void bsaConfFree(BsaConf* conf) {
    if (conf == nullptr) {
        return;
    }
    // All slots, not only the `count` in use; the unused ones are null only as far as the first array goes.
    for (size_t i = 0; i < conf->capacity; ++i) {
        free(conf->entries[i].name);
        free(conf->entries[i].value);
    }
    free(conf->entries);
    free(conf);
}

} // namespace brask
