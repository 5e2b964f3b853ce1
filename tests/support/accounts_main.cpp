#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include <unistd.h>

/// Runs the test program once more with accounts of its own (tests/support/accounts) in front of the
/// machine's.
int main(int argc, char** argv) {
    if (getenv("NSS_WRAPPER_PASSWD") == nullptr) {
        const char* asanOptions = getenv("ASAN_OPTIONS");
        setenv("ASAN_OPTIONS",
               (std::string(asanOptions != nullptr ? asanOptions : "") + ":verify_asan_link_order=0").c_str(),
               1);
        setenv("LD_PRELOAD", NSS_WRAPPER_LIBRARY, 1);
        setenv("NSS_WRAPPER_PASSWD", ACCOUNTS_DIR "/passwd", 1);
        setenv("NSS_WRAPPER_GROUP", ACCOUNTS_DIR "/group", 1);
        execv("/proc/self/exe", argv);
        perror("execv");
        return 1;
    }
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
