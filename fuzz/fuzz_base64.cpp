// Whatever is encoded decodes to itself, and any text decodes without harm.

#include "backup_sign_lib/base64.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const int length = static_cast<int>(size);
    int decodedLength = 0;
    std::free(brask::base64Decode(reinterpret_cast<const char*>(data), length, &decodedLength));

    char* text = brask::base64Encode(data, length);
    unsigned char* back = brask::base64Decode(text, static_cast<int>(std::strlen(text)), &decodedLength);
    if (decodedLength != length || std::memcmp(back, data, size) != 0) {
        std::abort();
    }
    std::free(back);
    std::free(text);
    return 0;
}
