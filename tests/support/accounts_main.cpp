#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <regex>
#include <string>

#include <grp.h>
#include <sys/mman.h>
#include <unistd.h>

namespace {

/// The path of the accounts' file `name`. Who is not root can give files to nobody else: to him the panel's
/// account is his own, in a file without a name that outlives exec.
std::string accountsFile(const char* name) {
    std::string path = std::string(SOURCE_FOLDER "/tests/support/accounts/") + name;
    if (geteuid() == 0) {
        return path;
    }
    std::string text =
        std::regex_replace(test_support::readFile(path), std::regex("54331"), std::to_string(geteuid()));
    text = std::regex_replace(text, std::regex("54330"), std::to_string(getegid()));
    const int fd = memfd_create(name, 0);
    if (write(fd, text.data(), text.size()) != static_cast<ssize_t>(text.size())) {
        throw std::system_error(errno, std::generic_category(), name);
    }
    return "/proc/self/fd/" + std::to_string(fd);
}

} // namespace

/// In place of the library's own, which sets no group at all since its version 1.1.16.
extern "C" int initgroups(const char* user, gid_t group) {
    gid_t groups[16];
    int count = std::size(groups);
    return getgrouplist(user, group, groups, &count) < 0 ? -1 : setgroups(count, groups);
}

/// Runs the test program once more with accounts of its own (tests/support/accounts) in front of the
/// machine's.
int main(int argc, char** argv) {
    if (getenv("NSS_WRAPPER_PASSWD") == nullptr) {
        const char* asanOptions = getenv("ASAN_OPTIONS");
        setenv("ASAN_OPTIONS",
               (std::string(asanOptions != nullptr ? asanOptions : "") + ":verify_asan_link_order=0").c_str(),
               1);
        setenv("LD_PRELOAD", NSS_WRAPPER_LIBRARY, 1);
        setenv("NSS_WRAPPER_PASSWD", accountsFile("passwd").c_str(), 1);
        setenv("NSS_WRAPPER_GROUP", accountsFile("group").c_str(), 1);
        execv("/proc/self/exe", argv);
        perror("execv");
        return 1;
    }
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
