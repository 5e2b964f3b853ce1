#pragma once

#include "tests/support/support.h"

#include <sched.h>
#include <sys/mount.h>

namespace test_support {

/// Runs `body` in a child process that sees an empty file system of its own at `path`. Nothing is returned
/// where that is not permitted, as it is not to an ordinary user: the test is to be skipped then.
template <class Body>
std::optional<Outcome> withMountAt(const std::string& path, const char* options, Body body) {
    const std::string refused = "mounting is not permitted";
    const Outcome outcome = inChild([&] {
        if (unshare(CLONE_NEWNS) != 0 || mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
            mount("none", path.c_str(), "tmpfs", 0, options) != 0) {
            throw std::runtime_error(refused);
        }
        body();
    });
    return outcome.err == refused ? std::nullopt : std::optional(outcome);
}

} // namespace test_support
