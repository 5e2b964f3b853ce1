#include "tests/end_to_end/tool_fixture.h"

#include <sstream>

namespace {

using namespace end_to_end;

using DumpTest = ToolTest;

TEST_F(DumpTest, ADumpSignedInOneProcessVerifiesInAnother) {
    const std::string first = dir.write("first", std::string(3'000'000, 'a'));
    const std::string empty = dir.write("empty", "");
    const std::string last = dir.write("last", "tail");
    // The second time on top: the last document covers the dump and the first document.
    for (const unsigned documents : {1U, 2U}) {
        expectSilentSuccess({"--sign-dump", first, empty, last});
        EXPECT_EQ(fs::file_size(first), 3'000'000U);
        EXPECT_EQ(fs::file_size(last), 4U + 1196U * documents);
        expectSilentSuccess({"--verify-dump", first, empty, last});
    }
    // Cut into volumes in another way, the dump is the same.
    expectSilentSuccess({"--verify-dump", dir.write("joined", readFile(first) + readFile(last))});

    // A last volume that is empty when it is signed never verifies.
    expectSilentSuccess({"--sign-dump", first, empty});
    expectFailure({"--verify-dump", first, empty}, "Digest is wrong");
}

TEST_F(DumpTest, EveryFailureHasItsTextAndLeavesTheVolumesAlone) {
    const std::string first = dir.write("first", "first");
    const std::string last = dir.write("last", "last");
    const std::string missing = dir.path("missing");
    expectFailure({"--sign-dump", first, missing}, "File " + missing + " not found");
    expectFailure({"--verify-dump", missing}, "File " + missing + " not found");
    expectFailure({"--sign-dump", dir.path()}, dir.path() + " is not regular file");
    // Nobody may write this file, not even root.
    const std::string readOnly = "/sys/kernel/uevent_seqnum";
    expectFailure({"--sign-dump", readOnly}, "Unable to save sign to" + readOnly);
    expectFailure({"--verify-dump", last}, "Dump is not signed");
    EXPECT_EQ(readFile(last), "last");

    expectSilentSuccess({"--sign-dump", first, last});
    expectFailure({"--verify-dump", last}, "Digest is wrong");
    expectFailure({"--verify-dump", last, first}, "Dump is not signed");
    const std::string whole = readFile(last);
    const std::pair<std::string, std::string> cases[] = {
        {"l" + whole, "Digest is wrong\n"},
        {"last<Signature xmlns=\"urn:x\"/>",
         "Requred XML element is absent: n:SignedInfo/n:Reference/n:DigestValue\n"},
        {whole + "junk", "Unable to parse the signature: The XML file - was not parsed successfully with the "
                         "following errors:\n"},
        {whole + "\n", ""},
    };
    for (const auto& [content, text] : cases) {
        dir.write("last", content);
        const Outcome outcome = tool({"--verify-dump", first, last});
        EXPECT_THAT(outcome.out, StartsWith(text));
        EXPECT_EQ(outcome.status, text.empty() ? 0 : 1);
    }
    expectSilentSuccess({"--generate"});
    expectFailure({"--verify-dump", first, last}, "Signature is wrong");
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

TEST_F(DumpTest, VolumesAboveFourGigabytesTakeNoMoreMemoryThanSmallOnes) {
    const std::string large = dir.write("large", "begin");
    fs::resize_file(large, (4ULL << 30) + 4097);
    // A child's peak begins with that of the process it was forked from, and a test program is large.
    std::istringstream peaks(shell("time() { /usr/bin/time -f %M \"$@\" 2>&1 >/dev/null; }; cd \"${2%/*}\"\n"
                                   "time \"$1\" --sign-dump large; time \"$1\" --verify-dump large\n"
                                   "time \"$3\" verify -k product/admin/htdocs/bu_pubkey.txt large",
                                   {BACKUP_SIGN_PROGRAM, large, DUMPSIG_PROGRAM}));
    for (int run = 0; run < 3; ++run) {
        long kib = 0;
        EXPECT_TRUE(peaks >> kib);
#ifndef __SANITIZE_ADDRESS__
        EXPECT_LT(kib, 24 * 1024) << run;
#endif
    }
    // A change in front of the signature, beyond 4 GiB, is found.
    std::fstream(large, std::ios::in | std::ios::out | std::ios::binary).seekp((4LL << 30) + 4000).put('x');
    expectFailure({"--verify-dump", large}, "Digest is wrong");
}

} // namespace
