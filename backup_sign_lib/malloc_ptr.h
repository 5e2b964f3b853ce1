#pragma once

#include <cstdlib>
#include <memory>

namespace brask {

struct MallocDeleter {
    void operator()(void* block) const { std::free(block); }
};

/// Owns a block that came from malloc, such as the results of base64Encode and base64Decode.
template <class T>
using MallocPtr = std::unique_ptr<T, MallocDeleter>;

} // namespace brask
