#include "dumpsig/window.h"

#include <algorithm>

namespace dumpsig {

void Window::push(std::string_view bytes) {
    const std::size_t total = bytesHeld.size() + bytes.size();
    std::size_t excess = total - std::min(total, capacity);
    const std::size_t oldest = std::min(excess, bytesHeld.size());
    release(oldest);
    excess -= oldest;
    if (excess > 0) {
        sink(bytes.substr(0, excess));
        bytes.remove_prefix(excess);
    }
    bytesHeld.append(bytes);
}

void Window::release(std::size_t count) {
    if (count > 0) {
        sink(std::string_view(bytesHeld).substr(0, count));
        bytesHeld.erase(0, count);
    }
}

} // namespace dumpsig
