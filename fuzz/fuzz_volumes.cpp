// A dump of any volumes, signed, and then changed in some way: what is signed verifies, a byte changed in
// front of the document is noticed, and so are bytes after it and an end that is missing. dumpsig tells the
// same of all of them.

#include "backup_sign_lib/dump_signature.h"
#include "backup_sign_lib/rsa_keys.h"
#include "commons/errors/ex_base.h"
#include "dumpsig/output.h"
#include "dumpsig/verdict.h"
#include "fuzz/fuzz.h"

#include <algorithm>
#include <array>

namespace {

using Pair = std::pair<std::string, std::string>;

const Pair& keyPair() {
    static const Pair pair = brask::generateServerKeypair();
    return pair;
}

const std::vector<dumpsig::PublicKey>& keys() {
    static const auto read = dumpsig::readKeyFile(fuzz::MemoryFile(keyPair().second).path());
    return read;
}

/// The same three files, whatever the input.
const std::array<fuzz::MemoryFile, 3>& files() {
    static const std::array<fuzz::MemoryFile, 3> volumes;
    return volumes;
}

/// Why a dump does not verify; empty if it does.
std::string problemOf(const std::vector<std::string>& dump) {
    try {
        brask::verifyDumpFile(dump, keyPair().second);
        return {};
    } catch (const brask::ExTraceableBase<brask::ExDefault>& e) {
        return dumpsig::oneLine(e.GetText());
    }
}

/// Verifies by both programs. Returns whether the dump is intact.
bool verify(const std::vector<std::string>& dump) {
    std::string content;
    const dumpsig::Verdict verdict = dumpsig::judgeDump(
        dumpsig::examineVolumes(dump), keys(), [&](std::string_view bytes) { content += bytes; },
        std::make_shared<std::atomic<std::uint64_t>>());
    const bool intact = verdict.judgement == dumpsig::Judgement::kIntact;
    const std::string problem = problemOf(dump);
    if (verdict.documentOffset == 0U) {
        // There the tool takes the document for content, too.
        fuzz::require(intact ? problem == "Digest is wrong" : !problem.empty(),
                      "a last volume without content never verifies");
    } else {
        fuzz::require(problem.empty() == intact && problem == verdict.text, "both judge alike");
    }
    fuzz::require(!intact || content.size() == verdict.signedBytes, "the content ends at the document");
    return intact;
}

/// Whether `text` may follow the root of an XML document: blanks, comments and processing instructions.
bool mayFollow(std::string_view text) {
    while (true) {
        text.remove_prefix(std::min(text.find_first_not_of(" \t\r\n"), text.size()));
        const bool isComment = text.starts_with("<!--");
        const std::string_view end = isComment ? "-->" : "?>";
        const std::size_t place = text.find(end, isComment ? 4 : 2);
        if (text.empty() || !(isComment || text.starts_with("<?")) || place == std::string_view::npos) {
            return text.empty();
        }
        text.remove_prefix(place + end.size());
    }
}

/// Changes the dump, and tells if it still has to verify, must not any more, or may do either.
enum class Expected { kIntact, kRefused, kEither };

Expected change(fuzz::Input& input, std::vector<std::string>& volumes, std::size_t contentOfLast) {
    const unsigned kind = input.byte() % 5;
    const std::size_t place = input.number(0xFFFF);
    std::string& last = volumes.back();
    if (kind == 0) {
        std::string& volume = volumes[place % volumes.size()];
        const std::size_t end = &volume == &last ? contentOfLast : volume.size();
        if (end == 0) {
            return Expected::kIntact;
        }
        char& byte = volume[place % end];
        byte = static_cast<char>(byte ^ (1 << (place % 8)));
        return Expected::kRefused;
    }
    if (kind == 1) {
        const std::string_view tail = input.rest();
        last += tail;
        return tail.empty() ? Expected::kIntact : mayFollow(tail) ? Expected::kEither : Expected::kRefused;
    }
    if (kind == 2) {
        const std::size_t cut = place % (last.size() + 1);
        last.resize(last.size() - cut);
        return cut == 0 ? Expected::kIntact : Expected::kRefused;
    }
    if (kind == 3) {
        const std::size_t at = contentOfLast + place % (last.size() - contentOfLast);
        const std::string_view replacement = input.rest();
        last.replace(at, replacement.size(), replacement);
        return Expected::kEither;
    }
    return Expected::kIntact;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    std::vector<std::string> volumes;
    std::vector<std::string> dump;
    for (std::size_t count = input.byte() % files().size() + 1; volumes.size() < count;) {
        std::string volume;
        const unsigned times = input.byte() % 64; // so that the document comes to lie anywhere in a long file
        const std::string_view piece = input.take(input.byte());
        for (unsigned i = 0; i <= times; ++i) {
            volume += piece;
        }
        files()[volumes.size()].write(volume);
        dump.push_back(files()[volumes.size()].path());
        volumes.push_back(volume);
    }
    const std::string unsignedLast = volumes.back();
    brask::signDumpFile(dump, keyPair().first, keyPair().second);
    volumes.back() = files()[volumes.size() - 1].read();
    fuzz::require(volumes.back().starts_with(unsignedLast), "signing appends");
    const Expected expected = change(input, volumes, unsignedLast.size());
    for (std::size_t i = 0; i < volumes.size(); ++i) {
        files()[i].write(volumes[i]);
    }
    const bool intact = verify(dump);
    fuzz::require(expected != Expected::kIntact || intact, "what is signed verifies");
    fuzz::require(expected != Expected::kRefused || !intact, "what was changed does not verify");
    return 0;
}
