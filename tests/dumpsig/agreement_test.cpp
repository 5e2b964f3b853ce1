#include "backup_sign_lib/dump_signature.h"
#include "tests/end_to_end/tool_fixture.h"

#include <boost/algorithm/string/replace.hpp>

#include <algorithm>
#include <random>

namespace {

using namespace end_to_end;
using Texts = std::vector<std::string>;

const Texts kInsertions =
    split(std::string(1, '\0') + "|\n|<Signature xmlns=|<!-- -->|</a>|&amp;|&x;|<?x?>|=|"
                                 "*|\xff|\x1b| |A|]]>|<n:b xmlns:n='u'/>");
/// What is replaced, each with its replacement after it.
const Texts kEdits =
    split("DigestValue>|OtherValue>|Exponent>|x>|</Signature>||SignedInfo>|Signed>|xmldsig#\">|xmldsig\">|\n|"
          "\r\n|=<|<|<SignatureValue>|<SignatureValue>A|Modulus>|N>|bsabackup|&lt;");

/// Dumps of all kinds, the same ones for the same seed: whole and damaged in whatever way.
class DumpMaker {
public:
    DumpMaker(unsigned seed, std::string privateKey, std::string publicKey)
        : random(seed), privateKey(std::move(privateKey)), publicKey(std::move(publicKey)) {}

    Texts make(const std::string& folder) {
        Texts volumes;
        for (std::size_t count = 1 + upTo(2); count > 0; --count) {
            volumes.push_back(folder + "/" + std::to_string(count));
            // A last volume that is empty when it is signed is where the two programs differ.
            std::ofstream(volumes.back(), std::ios::binary)
                << bytes((count == 1 ? 1 : 0) + upTo(oneIn(20) ? 600'000 : 5'000));
        }
        for (int signatures = oneIn(12) ? 0 : oneIn(10) ? 2 : 1; signatures > 0; --signatures) {
            brask::signDumpFile(volumes, privateKey, publicKey);
        }
        if (!oneIn(4)) {
            damage(volumes);
        }
        return volumes;
    }

private:
    void damage(Texts& volumes) {
        const std::string path = oneIn(3) ? volumes[upTo(volumes.size() - 1)] : volumes.back();
        std::string content = readFile(path);
        // Most of the time in or near the document.
        const std::size_t size = content.size();
        const std::size_t place = oneIn(3) ? upTo(size) : size - std::min(size, upTo(1300));
        const std::string& text = kInsertions[upTo(kInsertions.size() - 1)];
        const std::size_t edit = 2 * upTo(kEdits.size() / 2 - 1);
        switch (upTo(5)) {
        case 0:
            std::swap(volumes.front(), volumes.back());
            return;
        case 1:
            content.resize(place);
            break;
        case 2:
            content.append(oneIn(4) ? bytes(1 + upTo(5'000)) : text);
            break;
        case 3: // put in, cut out and replace
            content.replace(place, upTo(2) * upTo(20), oneIn(2) ? text : bytes(upTo(1)));
            break;
        default:
            boost::algorithm::replace_all(content, kEdits[edit], kEdits[edit + 1]);
        }
        std::ofstream(path, std::ios::binary) << content;
    }

    std::size_t upTo(std::size_t most) { return std::uniform_int_distribution<std::size_t>(0, most)(random); }

    bool oneIn(std::size_t n) { return upTo(n - 1) == 0; }

    std::string bytes(std::size_t size) {
        std::string content(size, '\0');
        std::generate(content.begin(), content.end(), std::ref(random));
        return content;
    }

    std::mt19937 random;
    const std::string privateKey;
    const std::string publicKey;
};

/// Runs a program's verification; its answer without what a line of dumpsig's does not take over.
Outcome verify(Texts command, const Texts& volumes) {
    command.insert(command.end(), volumes.begin(), volumes.end());
    Outcome outcome = runProgram(command);
    std::erase_if(outcome.out, [](char c) { return c <= ' ' || c > '~' || c == '?' || c == ';'; });
    return outcome;
}

using AgreementTest = ToolTest;

TEST_F(AgreementTest, WithoutAKeyFileItIsTheOneThatTheServerPublishes) {
    const Outcome none = runProgram({DUMPSIG_PROGRAM, "verify", "/dev/null"});
    EXPECT_EQ(none.status, 2);
    EXPECT_THAT(none.err,
                StartsWith("dumpsig: " + productPath("admin/htdocs/bu_pubkey.txt") + ": no such file"));
}

TEST_F(AgreementTest, AThousandDumpsAreJudgedAlikeByBothPrograms) {
    const std::string pair = tool({"--get-certificate"}).out;
    DumpMaker maker(1, pair.substr(0, pair.find("\n\n")), pair.substr(pair.find("\n\n") + 2));
    int good = 0;
    for (int i = 0; i < 1000; ++i) {
        const Texts volumes = maker.make(dir.path());
        const Outcome wanted = verify({BACKUP_SIGN_PROGRAM, "--verify-dump"}, volumes);
        const Outcome told = verify({DUMPSIG_PROGRAM, "verify"}, volumes);
        EXPECT_EQ(told.status, wanted.status) << i;
        EXPECT_EQ(wanted.status == 0 ? told.out.substr(0, 23) : told.out,
                  wanted.status == 0 ? "intactsignedwithSHA256:" : wanted.out)
            << i;
        good += wanted.status == 0 ? 1 : 0;
    }
    EXPECT_GT(good, 200);
    EXPECT_LT(good, 800);
}

} // namespace
