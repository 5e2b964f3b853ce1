#include "commons/text/random_text.h"

#include <array>
#include <cstdlib>
#include <ctime>
#include <string_view>
#include <utility>

namespace brask {

namespace {

int random() {
    static bool seeded = false;
    if (!seeded) {
        std::srand(static_cast<unsigned>(std::time(nullptr)));
        seeded = true;
    }
    return std::rand();
}

size_t randomBelow(size_t limit) {
    return static_cast<size_t>(random()) % limit;
}

char randomCharacter(std::string_view alphabet) {
    return alphabet[randomBelow(alphabet.size())];
}

} // namespace

std::string randomName() {
    constexpr size_t length = 7;
    std::string name;
    while (name.size() < length) {
        name += randomCharacter("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789");
    }
    return name;
}

std::string randomPassword(int length) {
    constexpr std::array<std::string_view, 4> classes{"1234567890", "ABCDEFGHIJKLMNOPQRSTUVWXYZ",
                                                      "abcdefghijklmnopqrstuvwxyz", "~!@#$;%^&()-_+=,.{}[]"};
    std::string password;
    for (int i = 0; i < length; ++i) {
        // One of each class first, then of any.
        const size_t next = password.size() < classes.size() ? password.size() : randomBelow(classes.size());
        password += randomCharacter(classes[next]);
    }
    for (size_t i = password.size(); i > 1; --i) {
        std::swap(password[i - 1], password[randomBelow(i)]);
    }
    return password;
}

} // namespace brask
