#pragma once

// Base64 of the standard alphabet, with lines of 71 characters. The two functions share one static table and
// rebuild it at each call: they must not run at the same time.

#include <cstdlib>
#include <memory>

namespace brask {

struct MallocDeleter {
    void operator()(void* block) const { std::free(block); }
};

/// Owns a block that came from malloc, as the results of both functions do.
template <class T>
using MallocPtr = std::unique_ptr<T, MallocDeleter>;

/// Encodes `length` bytes. The result ends in a NUL and comes from malloc; the caller frees it. A line feed
/// follows every 71st character, padding included, so a text whose length is a multiple of 71 ends in one.
char* base64Encode(const unsigned char* data, int length);

/// Decodes `length` characters and stores the number of bytes in `*resultLength`. The result comes from
/// malloc and the caller frees it; one NUL follows the counted bytes.
///
/// No text is an error: white space and characters outside the alphabet vanish, an unfinished group of four
/// at the end is dropped, and what follows padding is not read. A text without any group gives a block of
/// length 0.
unsigned char* base64Decode(const char* text, int length, int* resultLength);

} // namespace brask
