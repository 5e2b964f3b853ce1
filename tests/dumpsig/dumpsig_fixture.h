#pragma once

#include "backup_sign_lib/dump_signature.h"
#include "backup_sign_lib/rsa_keys.h"
#include "commons/text/text_utils.h"
#include "tests/end_to_end/tool_fixture.h"

#include <boost/algorithm/string/replace.hpp>

#include <cstdlib>
#include <regex>

namespace dumpsig_test {

using namespace end_to_end;

/// What a command line, run by the shell among the files of the test, must do. In the patterns "*" stands for
/// anything.
struct Row {
    const char* script;
    int status;
    const char* out;
    const char* err;
};

inline bool matches(const std::string& text, const std::string& pattern) {
    return std::regex_match(text,
                            std::regex(boost::replace_all_copy(brask::escapeRegex(pattern), "\\*", "[^]*")));
}

/// A dump of three volumes, v1 to v3, and all of it as one, with the key that signed it in server.pub, as a
/// server publishes it, and another key in other.pub.
class DumpsigTest : public testing::Test {
protected:
    DumpsigTest() {
        dir.write("server.pub", "Public key of this host\n\n" + keys.second + "\n");
        run("seq 200000 | head -c 1000000 >v1; : >v2; echo tail >v3; cat v1 v2 v3 >content\n"
            "openssl genrsa -out private.pem 2048 2>&-; openssl rsa -in private.pem -pubout -out other.pub "
            "2>&-");
        sign({dir.path("v1"), dir.path("v2"), dir.path("v3")});
        run("cat v1 v2 v3 >all");
    }

    void sign(const std::vector<std::string>& volumes) const {
        brask::signDumpFile(volumes, keys.first, keys.second);
    }

    /// Runs a script in the test's folder, which is its home, too, with the built program before all others
    /// and "verify" for dumpsig's with the server's key.
    Outcome run(const std::string& script) const {
        return end_to_end::runProgram(
            {"/bin/sh", "-c", "cd \"$1\"; verify() { dumpsig verify -k server.pub \"$@\"; }\n" + script, "sh",
             dir.path()},
            {{"PATH", DUMPSIG_FOLDER ":" + std::string(std::getenv("PATH"))}, {"HOME", dir.path()}});
    }

    template <std::size_t N>
    void expectRows(const Row (&rows)[N]) const {
        for (const Row& row : rows) {
            const Outcome outcome = run(row.script);
            EXPECT_TRUE(outcome.status == row.status && matches(outcome.out, row.out) &&
                        matches(outcome.err, row.err))
                << row.script << "\nexit code " << outcome.status << ", wanted " << row.status << "\n"
                << outcome.out << "--- wanted\n"
                << row.out << "--- standard error\n"
                << outcome.err;
        }
    }

    test_support::TempDir dir;

private:
    const std::pair<std::string, std::string> keys = brask::generateServerKeypair();
};

} // namespace dumpsig_test
