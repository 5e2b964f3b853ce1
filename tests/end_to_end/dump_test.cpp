#include "tests/end_to_end/tool_fixture.h"

namespace {

using namespace end_to_end;
using namespace test_support;
namespace fs = std::filesystem;

class DumpTest : public ToolTest {
protected:
    std::vector<std::string> volumes(const std::vector<std::string>& contents) const {
        std::vector<std::string> paths;
        paths.reserve(contents.size());
        for (std::size_t i = 0; i < contents.size(); ++i) {
            paths.push_back(dir.write("volume" + std::to_string(i), contents[i]));
        }
        return paths;
    }

    static std::vector<std::string> command(const std::string& option, std::vector<std::string> paths) {
        paths.insert(paths.begin(), option);
        return paths;
    }
};

TEST_F(DumpTest, ADumpSignedInOneProcessVerifiesInAnother) {
    const std::vector<std::string> paths = volumes({std::string(3'000'000, 'a'), "", "tail"});
    expectSilentSuccess(command("--sign-dump", paths));
    EXPECT_EQ(fs::file_size(paths[0]), 3'000'000U);
    EXPECT_EQ(fs::file_size(paths[2]), 4U + 1196U);
    expectSilentSuccess(command("--verify-dump", paths));

    // Once more on top: the last document covers the dump and the first document.
    expectSilentSuccess(command("--sign-dump", paths));
    expectSilentSuccess(command("--verify-dump", paths));

    // Cut into volumes in another way, the dump is the same.
    const std::string joined = dir.write("joined", readFile(paths[0]) + readFile(paths[2]));
    expectSilentSuccess({"--verify-dump", joined});

    // A last volume that is empty when it is signed never verifies.
    const std::vector<std::string> bare = volumes({"first", ""});
    expectSilentSuccess(command("--sign-dump", bare));
    expectFailure(command("--verify-dump", bare), "Digest is wrong");
}

TEST_F(DumpTest, EveryFailureHasItsTextAndLeavesTheVolumesAlone) {
    const std::vector<std::string> paths = volumes({"first", "second"});
    const std::string missing = dir.path("missing");
    expectFailure({"--sign-dump", paths[0], missing}, "File " + missing + " not found");
    expectFailure({"--verify-dump", missing}, "File " + missing + " not found");
    expectFailure({"--sign-dump", dir.path()}, dir.path() + " is not regular file");
    // Nobody may write this file, not even root.
    expectFailure({"--sign-dump", "/sys/kernel/uevent_seqnum"},
                  "Unable to save sign to/sys/kernel/uevent_seqnum");
    expectFailure({"--verify-dump", paths[1]}, "Dump is not signed");
    EXPECT_EQ(readFile(paths[1]), "second");

    expectSilentSuccess(command("--sign-dump", paths));
    expectFailure({"--verify-dump", paths[1]}, "Digest is wrong");
    expectFailure({"--verify-dump", paths[1], paths[0]}, "Dump is not signed");
    const std::string signedLast = readFile(paths[1]);

    std::string changed = signedLast;
    changed[0] ^= 1;
    dir.write("volume1", changed);
    expectFailure(command("--verify-dump", paths), "Digest is wrong");

    dir.write("volume1", "second<Signature xmlns=\"urn:x\"/>");
    expectFailure(command("--verify-dump", paths),
                  "Requred XML element is absent: n:SignedInfo/n:Reference/n:DigestValue");

    dir.write("volume1", signedLast + "junk");
    EXPECT_THAT(
        tool(command("--verify-dump", paths)).out,
        StartsWith("Unable to parse the signature: The XML file - was not parsed successfully with the "
                   "following errors:\n"));

    dir.write("volume1", signedLast + "\n");
    expectSilentSuccess(command("--verify-dump", paths));

    expectSilentSuccess({"--generate"});
    expectFailure(command("--verify-dump", paths), "Signature is wrong");
}

TEST_F(DumpTest, NoConfigurationOfOpensslsIsRead) {
    // With this one read, there is no SHA-1.
    const std::string configuration =
        dir.write("openssl.cnf", "openssl_conf = init\n[init]\nalg_section = algorithms\n"
                                 "[algorithms]\ndefault_properties = provider=none\n");
    const std::string file = dir.write("dump", "content");
    for (const std::string command : {"--sign-dump", "--verify-dump"}) {
        EXPECT_EQ(tool({command, file}, {{"OPENSSL_CONF", configuration}}).out, "");
    }
}

/// The peak resident memory, in KiB, of one run of the tool that must succeed.
long peakMemory(const std::vector<std::string>& arguments) {
    // A child's peak begins with that of the process it was forked from, and a test program is large.
    std::vector<std::string> command{"/usr/bin/time", "--format=%M", BACKUP_SIGN_PROGRAM};
    command.insert(command.end(), arguments.begin(), arguments.end());
    const Outcome outcome = runProgram(command);
    EXPECT_EQ(outcome.status, 0) << outcome.out;
    return std::stol(outcome.err);
}

TEST_F(DumpTest, VolumesAboveFourGigabytesTakeNoMoreMemoryThanSmallOnes) {
    constexpr long kLimitKib = 16 * 1024;
    const std::string small = dir.write("small", std::string(65536, 's'));
    const std::string large = dir.write("large", "begin");
    fs::resize_file(large, (4ULL << 30) + 4097);
    for (const std::string& file : {small, large}) {
        const long signing = peakMemory({"--sign-dump", file});
        const long verifying = peakMemory({"--verify-dump", file});
#ifndef __SANITIZE_ADDRESS__
        EXPECT_LT(signing, kLimitKib) << file;
        EXPECT_LT(verifying, kLimitKib) << file;
#else
        (void)signing, (void)verifying, (void)kLimitKib;
#endif
    }
    // A change in front of the signature, beyond 4 GiB, is found.
    std::fstream(large, std::ios::in | std::ios::out | std::ios::binary).seekp((4LL << 30) + 4000).put('x');
    expectFailure({"--verify-dump", large}, "Digest is wrong");
}

} // namespace
