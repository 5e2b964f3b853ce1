#include "backup_sign_lib/byte_buffer.h"

#include <cstdlib>

namespace brask {

namespace {

constexpr int kGrowth = 512;

} // namespace

void byteBufferInit(ByteBuffer& buffer) {
    buffer.data = static_cast<char*>(std::malloc(kGrowth));
    buffer.data[0] = '\0';
    buffer.capacity = kGrowth;
    buffer.cursor = buffer.data;
    buffer.count = 0;
}

void byteBufferPush(ByteBuffer& buffer, char byte) {
    *buffer.cursor++ = byte;
    ++buffer.count;
    if (buffer.count == buffer.capacity) {
        buffer.capacity = buffer.count + kGrowth;
        // NOLINTNEXTLINE(bugprone-suspicious-realloc-usage): see the header.
        buffer.data = static_cast<char*>(std::realloc(buffer.data, buffer.capacity));
        buffer.cursor = buffer.data + buffer.count;
    }
}

} // namespace brask
