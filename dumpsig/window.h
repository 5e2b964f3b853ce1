#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

namespace dumpsig {

/// Takes bytes in pieces of any size. What it is given does not outlive the call.
using Sink = std::function<void(std::string_view)>;

/// The end of a stream that has not ended yet: passes on what goes through, but holds the last bytes back.
class Window final {
public:
    Window(std::size_t capacity, Sink sink) : capacity(capacity), sink(std::move(sink)) {}

    void push(std::string_view bytes);

    /// What is held back: the last `capacity` bytes, or all there were.
    const std::string& held() const { return bytesHeld; }

    /// Passes on the first `count` of the bytes held back.
    void release(std::size_t count);

private:
    const std::size_t capacity;
    const Sink sink;
    std::string bytesHeld;
};

} // namespace dumpsig
