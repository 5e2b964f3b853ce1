#include "tests/end_to_end/tool_fixture.h"

namespace end_to_end {

namespace {

constexpr const char* kHelper = "admin/bin/backup_restore_helper";

} // namespace

std::string shell(const std::string& script, const std::vector<std::string>& arguments) {
    std::vector<std::string> command{"/bin/sh", "-ec", script, "sh"};
    command.insert(command.end(), arguments.begin(), arguments.end());
    const Outcome outcome = runProgram(command);
    EXPECT_EQ(outcome.status, 0) << script << "\n" << outcome.out << outcome.err;
    return outcome.out;
}

ToolTest::ToolTest() : savedConfiguration(readFile(BRASK_CONF_FILE)) {
    fs::copy(BRASK_PRODUCT_ROOT, dir.path("product"), fs::copy_options::recursive);
    // What runs of the staged tree itself have left there stays behind.
    for (const char* folder : {"var", "admin/htdocs"}) {
        fs::remove_all(productPath(folder));
        fs::create_directory(productPath(folder));
    }
    std::ofstream(BRASK_CONF_FILE) << "PRODUCT_ROOT_D " << dir.path("product") << "\n";
}

ToolTest::~ToolTest() {
    std::ofstream(BRASK_CONF_FILE) << savedConfiguration;
}

Outcome ToolTest::tool(const std::vector<std::string>& arguments, const Environment& env,
                       const std::string& input) const {
    std::vector<std::string> command{BACKUP_SIGN_PROGRAM};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return runProgram(command, env, input);
}

void ToolTest::expectFailure(const std::vector<std::string>& arguments, const std::string& text) const {
    const Outcome outcome = tool(arguments);
    EXPECT_EQ(outcome.out, text + "\n");
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.status, 1);
}

void ToolTest::expectSilentSuccess(const std::vector<std::string>& arguments) const {
    const Outcome outcome = tool(arguments);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.status, 0);
}

void ToolTest::replaceHelper(const std::string& script) const {
    const std::string real = productPath("admin/bin/real_helper");
    fs::rename(productPath(kHelper), real);
    std::ofstream(productPath(kHelper)) << "#!/bin/sh\nREAL='" << real << "'\n" << script << "\n";
    fs::permissions(productPath(kHelper), fs::perms::owner_all);
}

} // namespace end_to_end
