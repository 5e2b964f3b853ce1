// Any file loads, into names and values of the syntax, in order; and what was loaded, written as such a file,
// loads the same.

#include "fuzz/fuzz.h"
#include "lib/runtime/bsa_conf_load.h"

#include <cctype>
#include <cstring>
#include <map>

namespace {

using Values = std::map<std::string, std::string>;

void checkEntry(const brask::BsaConfEntry& entry) {
    fuzz::require(*entry.name != '\0', "no name is empty");
    for (const char* at = entry.name; *at != '\0'; ++at) {
        fuzz::require(std::isalnum(static_cast<unsigned char>(*at)) != 0 || *at == '_', "a name is a word");
    }
    fuzz::require(*entry.value != '\0' && std::isspace(static_cast<unsigned char>(*entry.value)) == 0,
                  "a value begins with no blank");
    fuzz::require(std::strchr(entry.value, '#') == nullptr, "no value holds a comment");
}

Values load(const std::string& text) {
    static const fuzz::MemoryFile file;
    file.write(text);
    auto* conf = static_cast<brask::BsaConf*>(std::calloc(1, sizeof(brask::BsaConf)));
    fuzz::require(brask::bsaConfLoad(file.path().c_str(), conf) == 0, "any file loads");
    Values values;
    const char* before = "";
    for (std::size_t i = 0; i < conf->count; ++i) {
        const brask::BsaConfEntry& entry = conf->entries[i];
        checkEntry(entry);
        fuzz::require(std::strcmp(before, entry.name) < 0, "names are in order, each of them once");
        before = entry.name;
        values[entry.name] = entry.value;
    }
    // Those beyond the first array hold anything until they are used, and bsaConfFree walks them all.
    conf->capacity = conf->count;
    brask::bsaConfFree(conf);
    return values;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(fuzz::textOf(data, size));
    const Values values = load(text);
    std::string written;
    for (const auto& [name, value] : values) {
        written += name;
        written += ' ';
        written += value;
        written += "#\n"; // which ends a value that ends in blanks
    }
    fuzz::require(load(written) == values, "what was loaded loads again");
    Values more = values;
    more.insert({"FUZZ", "a b"});
    fuzz::require(load("FUZZ first\nFUZZ \t a b\n" + text) == more, "the last line of a name counts");
    return 0;
}
