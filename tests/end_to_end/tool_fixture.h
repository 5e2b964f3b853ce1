#pragma once

#include "tests/support/support.h"

namespace end_to_end {

using namespace test_support;

/// Runs a script with /bin/sh in which "$1" and so on are `arguments`; fails the test when it fails.
inline std::string shell(const std::string& script, const std::vector<std::string>& arguments = {}) {
    std::vector<std::string> command{"/bin/sh", "-ec", script, "sh"};
    command.insert(command.end(), arguments.begin(), arguments.end());
    const Outcome outcome = runProgram(command);
    EXPECT_EQ(outcome.status, 0) << script << "\n" << outcome.out << outcome.err;
    return outcome.out;
}

/// The built program with a product tree of the test's own. The program's compiled-in configuration file,
/// which lies in the build tree, names that product tree for the time of the test; CTest never runs two of
/// these tests at once.
class ToolTest : public testing::Test {
protected:
    ToolTest() {
        fs::copy(BRASK_PRODUCT_ROOT, dir.path("product"), fs::copy_options::recursive);
        // What runs of the staged tree itself have left there stays behind.
        for (const char* folder : {"var", "admin/htdocs"}) {
            fs::remove_all(productPath(folder));
            fs::create_directory(productPath(folder));
        }
        std::ofstream(BRASK_CONF_FILE) << "PRODUCT_ROOT_D " << dir.path("product") << "\n";
    }

    ~ToolTest() override { std::ofstream(BRASK_CONF_FILE) << savedConfiguration; }

    static Outcome tool(const std::vector<std::string>& arguments, const Environment& env = {},
                        const std::string& input = {}) {
        std::vector<std::string> command{BACKUP_SIGN_PROGRAM};
        command.insert(command.end(), arguments.begin(), arguments.end());
        return runProgram(command, env, input);
    }

    /// Runs the tool and expects `text` and a line end on standard output, nothing on standard error, and
    /// exit code 1.
    static void expectFailure(const std::vector<std::string>& arguments, const std::string& text) {
        const Outcome outcome = tool(arguments);
        EXPECT_EQ(outcome.out, text + "\n");
        EXPECT_EQ(outcome.err, "");
        EXPECT_EQ(outcome.status, 1);
    }

    /// Runs the tool and expects no output at all and exit code 0.
    static void expectSilentSuccess(const std::vector<std::string>& arguments) {
        const Outcome outcome = tool(arguments);
        EXPECT_EQ(outcome.out + outcome.err, "");
        EXPECT_EQ(outcome.status, 0);
    }

    std::string productPath(const std::string& name) const { return dir.path("product/" + name); }

    /// Puts a shell script in the place of the key pair's helper; the real one stays as "$REAL".
    void replaceHelper(const std::string& script) const {
        const std::string helper = productPath("admin/bin/backup_restore_helper");
        const std::string real = productPath("admin/bin/real_helper");
        fs::rename(helper, real);
        std::ofstream(helper) << "#!/bin/sh\nREAL='" << real << "'\n" << script << "\n";
        fs::permissions(helper, fs::perms::owner_all);
    }

    TempDir dir;

private:
    const std::string savedConfiguration = readFile(BRASK_CONF_FILE);
};

} // namespace end_to_end
