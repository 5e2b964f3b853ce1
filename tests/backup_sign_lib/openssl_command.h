#pragma once

#include <array>
#include <stdexcept>
#include <string>

#include <stdio.h>

namespace test_support {

/// What `openssl ARGUMENTS`, a shell command line, writes to standard output. Throws when it fails.
inline std::string openssl(const std::string& arguments) {
    const std::string command = OPENSSL_EXECUTABLE " " + arguments + " 2>/dev/null";
    FILE* const pipe = popen(command.c_str(), "r");
    if (pipe == nullptr) {
        throw std::runtime_error("cannot run " + command);
    }
    std::string output;
    std::array<char, 4096> buffer{};
    while (const size_t count = fread(buffer.data(), 1, buffer.size(), pipe)) {
        output.append(buffer.data(), count);
    }
    if (pclose(pipe) != 0) {
        throw std::runtime_error(command + " failed");
    }
    return output;
}

} // namespace test_support
