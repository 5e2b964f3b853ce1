// Whatever is encoded is what others encode, in lines of 71 characters, and decodes to itself. Any text
// decodes, within bounds, and what is no part of the alphabet doesn't count.

#include "backup_sign_lib/base64.h"
#include "fuzz/fuzz.h"

#include <openssl/evp.h>

#include <algorithm>
#include <array>

namespace {

constexpr std::size_t kLongest = 512;

std::string_view decode(std::string_view text, brask::MallocPtr<unsigned char>& block) {
    int length = -1;
    block.reset(brask::base64Decode(text.data(), static_cast<int>(text.size()), &length));
    fuzz::require(length >= 0 && static_cast<std::size_t>(length) <= text.size() / 4 * 3, "decoding shrinks");
    fuzz::require(block.get()[length] == '\0', "a NUL follows");
    return fuzz::textOf(block.get(), static_cast<std::size_t>(length));
}

/// Takes the line feeds out, which belong after each 71st character.
std::string_view unwrapped(char* text) {
    char* end = text;
    std::size_t column = 0;
    for (const char* at = text; *at != '\0'; ++at) {
        fuzz::require((*at == '\n') == (column == 71), "lines have 71 characters");
        column = *at == '\n' ? 0 : column + 1;
        if (*at != '\n') {
            *end++ = *at;
        }
    }
    return {text, static_cast<std::size_t>(end - text)};
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view input = fuzz::textOf(data, std::min(size, kLongest));
    brask::MallocPtr<unsigned char> block;
    const std::string_view decoded = decode(input, block);
    const brask::MallocPtr<char> again(brask::base64Encode(block.get(), static_cast<int>(decoded.size())));
    brask::MallocPtr<unsigned char> second;
    fuzz::require(decode(again.get(), second) == decoded, "what was decoded survives");

    const brask::MallocPtr<char> text(brask::base64Encode(data, static_cast<int>(input.size())));
    brask::MallocPtr<unsigned char> back;
    fuzz::require(decode(text.get(), back) == input, "what was encoded decodes");
    std::array<unsigned char, kLongest / 3 * 4 + 8> expected;
    const int length = EVP_EncodeBlock(expected.data(), data, static_cast<int>(input.size()));
    const std::string_view plain = unwrapped(text.get());
    fuzz::require(plain == fuzz::textOf(expected.data(), static_cast<std::size_t>(length)),
                  "the text is that of others");
    fuzz::require(decode(plain, back) == input, "line feeds don't count");
    return 0;
}
