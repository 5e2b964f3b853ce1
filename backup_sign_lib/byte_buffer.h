#pragma once

namespace brask {

/// A growing array of bytes in a malloc block. A plain record: whoever ends up holding `data` frees it. The
/// results of malloc and realloc are not checked: without memory the next access is a fault, which ends the
/// process.
struct ByteBuffer {
    char* data;
    /// Size of the block.
    int capacity;
    /// Where the next byte goes.
    char* cursor;
    /// Bytes stored so far; there is always room for one more.
    int count;
};

/// Gives `buffer` a block of 512 bytes, the first of them 0, and nothing stored in it.
void byteBufferInit(ByteBuffer& buffer);

/// Stores one byte. May move the block.
void byteBufferPush(ByteBuffer& buffer, char byte);

} // namespace brask
