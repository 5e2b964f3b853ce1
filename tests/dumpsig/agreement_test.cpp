#include "backup_sign_lib/dump_signature.h"
#include "tests/end_to_end/tool_fixture.h"

#include <boost/algorithm/string/replace.hpp>
#include <gmock/gmock.h>

#include <algorithm>
#include <future>
#include <mutex>
#include <random>

namespace {

using end_to_end::Outcome;
using Volumes = std::vector<std::string>;

/// Dumps of all kinds, the same ones for the same seed: whole and damaged in whatever way.
class DumpMaker {
public:
    DumpMaker(unsigned seed, std::string privateKey, std::string publicKey)
        : random(seed), privateKey(std::move(privateKey)), publicKey(std::move(publicKey)) {}

    Volumes make(const std::string& folder) {
        // The library that signs is for one thread.
        static std::mutex mutex;
        const std::scoped_lock lock(mutex);
        Volumes volumes;
        for (int count = between(1, 3); count > 0; --count) {
            volumes.push_back(folder + "/" + std::to_string(count));
            // A last volume that is empty when it is signed is where the two programs differ.
            save(volumes.back(), bytes(between(count == 1 ? 1 : 0, oneIn(20) ? 600'000 : 5'000)));
        }
        if (!oneIn(12)) {
            brask::signDumpFile(volumes, privateKey, publicKey);
        }
        if (oneIn(10)) {
            brask::signDumpFile(volumes, privateKey, publicKey);
        }
        if (!oneIn(4)) {
            damage(volumes);
        }
        return volumes;
    }

private:
    void damage(Volumes& volumes) {
        std::string& path =
            oneIn(3) ? volumes[between(0, static_cast<int>(volumes.size()) - 1)] : volumes.back();
        std::string content = test_support::readFile(path);
        const auto place = [&] {
            return static_cast<std::size_t>(between(0, static_cast<int>(content.size())));
        };
        // Most of the time in or near the document.
        const std::size_t size = content.size();
        const std::size_t late = oneIn(3) ? place() : size - std::min<std::size_t>(size, between(0, 1300));
        static const Volumes texts{"\n",
                                   std::string(1, '\0'),
                                   "<Signature xmlns=",
                                   "<!-- -->",
                                   "</a>",
                                   "&amp;",
                                   "&x;",
                                   "<?x?>",
                                   "=",
                                   "*",
                                   "\xff",
                                   "\x1b",
                                   " ",
                                   "A",
                                   "]]>",
                                   "<n:b xmlns:n='u'/>"};
        const std::string& text = texts[between(0, static_cast<int>(texts.size()) - 1)];
        static const std::pair<const char*, const char*> edits[] = {{"DigestValue>", "OtherValue>"},
                                                                    {"Exponent>", "x>"},
                                                                    {"</Signature>", ""},
                                                                    {"SignedInfo>", "Signed>"},
                                                                    {"xmldsig#\">", "xmldsig\">"},
                                                                    {"\n", "\r\n"},
                                                                    {"=<", "<"},
                                                                    {"<SignatureValue>", "<SignatureValue>A"},
                                                                    {"Modulus>", "N>"},
                                                                    {"bsabackup", "&lt;"}};
        switch (between(0, 6)) {
        case 0:
            std::swap(volumes.front(), volumes.back());
            return;
        case 1:
            content.resize(late);
            break;
        case 2:
            content.append(oneIn(4) ? bytes(between(1, 5'000)) : text);
            break;
        case 3:
            content.insert(late, text);
            break;
        case 4:
            content.erase(late, between(1, 40));
            break;
        case 5:
            if (late < size) {
                content[late] = static_cast<char>(between(0, 255));
            }
            break;
        default:
            const auto& [from, to] = edits[between(0, std::size(edits) - 1)];
            boost::algorithm::replace_all(content, from, to);
        }
        save(path, content);
    }

    static void save(const std::string& path, const std::string& content) {
        std::ofstream(path, std::ios::binary) << content;
    }

    int between(int first, int last) { return std::uniform_int_distribution(first, last)(random); }

    bool oneIn(int n) { return between(1, n) == 1; }

    std::string bytes(int size) {
        std::string content(size, '\0');
        std::generate(content.begin(), content.end(), [this] { return static_cast<char>(random()); });
        return content;
    }

    std::mt19937 random;
    const std::string privateKey;
    const std::string publicKey;
};

class AgreementTest : public end_to_end::ToolTest {
protected:
    /// Runs a program's verification; its answer without what a line of dumpsig's does not take over.
    static Outcome verify(Volumes command, const Volumes& volumes) {
        command.insert(command.end(), volumes.begin(), volumes.end());
        Outcome outcome = end_to_end::runProgram(command);
        std::erase_if(outcome.out, [](char c) { return c <= ' ' || c > '~' || c == '?' || c == ';'; });
        return outcome;
    }

    /// Makes dumps and judges each by both programs. How many were good.
    int judge(DumpMaker maker, const std::string& folder, int count) const {
        std::filesystem::create_directory(folder);
        int good = 0;
        for (int i = 0; i < count; ++i) {
            const Volumes volumes = maker.make(folder);
            const Outcome wanted = verify({BACKUP_SIGN_PROGRAM, "--verify-dump"}, volumes);
            const Outcome told = verify({DUMPSIG_PROGRAM, "verify"}, volumes);
            EXPECT_EQ(told.status, wanted.status) << folder << " " << i;
            if (wanted.status == 0) {
                EXPECT_TRUE(told.out.starts_with("intactsignedwithSHA256:")) << told.out;
            } else {
                EXPECT_EQ(told.out, wanted.out) << folder << " " << i;
            }
            good += wanted.status == 0 ? 1 : 0;
        }
        return good;
    }
};

TEST_F(AgreementTest, AThousandDumpsAreJudgedAlikeByBothPrograms) {
    const Outcome none = end_to_end::runProgram({DUMPSIG_PROGRAM, "verify", "/dev/null"});
    EXPECT_EQ(none.status, 2);
    EXPECT_THAT(none.err, testing::StartsWith("dumpsig: " + productPath("admin/htdocs/bu_pubkey.txt") +
                                              ": no such file"));
    const std::string pair = tool({"--get-certificate"}).out;
    const std::size_t boundary = pair.find("\n\n");
    const std::string privateKey = pair.substr(0, boundary);
    const std::string publicKey = pair.substr(boundary + 2);
    auto other = std::async(std::launch::async, [&] {
        return judge({1, privateKey, publicKey}, dir.path("other"), 500);
    });
    const int good = judge({2, privateKey, publicKey}, dir.path("one"), 500) + other.get();
    EXPECT_GT(good, 200);
    EXPECT_LT(good, 800);
}

} // namespace
