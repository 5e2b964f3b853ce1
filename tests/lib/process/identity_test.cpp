#include "lib/process/lib/ExecCmd.h"
#include "lib/process/lib/identity.h"
#include "lib/runtime/low_level_log.h"
#include "tests/support/support.h"

namespace {

using namespace test_support;

TEST(LookUp, FindsNamesAndIdsAndLogsWhatIsUnknown) {
    const std::tuple<const char*, gid_t, const char*> groups[] = {
        {"workers", 54322, ""},
        {"54324", 54324, ""},
        {nullptr, 0, ""},
        {"4711", 0, "getgrgid(4711)"}, // a group has this name, but no group this id
        {"54324x", 0, "getgrnam(54324x)"},
    };
    LogInit("stderr", 3, 0, 0, nullptr);
    for (const auto& [nameOrId, gid, line] : groups) {
        testing::internal::CaptureStderr();
        bool found = gid == 0;
        EXPECT_EQ(groupIdChecked(nameOrId, &found), gid) << line;
        EXPECT_EQ(found, gid != 0) << line;
        const std::string log = testing::internal::GetCapturedStderr();
        EXPECT_EQ(log.substr(0, log.find(": ")), line);
    }
    EXPECT_EQ(idOfUser("worker", 0), 54321U);
    EXPECT_EQ(uidOfUser("nobody-here") + idOfUser("nobody-here", 0) + idOfUser("nobody-here", 1), 0U);
    EXPECT_STREQ(userNameOfId(54321), "worker");
    EXPECT_STREQ(userNameOfId(4000000000U), "4000000000");
}

TEST(Switch, FailuresEndTheProcessAndSayWhy) {
    const std::pair<const char*, const char*> cases[] = {
        {"nobody-here", "User 'nobody-here' not found"},
        {"homeless", "Cannot chdir to 'homeless' homedir '/nonexistent/home'"},
        {"root", "Cannot run as forbidden uid: 0\n"},
    };
    for (const auto& [user, text] : cases) {
        const auto child = inChild([&] { p_setuid_home(user); });
        EXPECT_EQ(child.status, 1) << text;
        EXPECT_THAT(child.out, StartsWith(std::string("identity_tests: ") + text));
        EXPECT_THAT(child.err, EndsWith(child.out));
    }
}

TEST(Switch, AChildRunsAsTheAccountItIsToldTo) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "only root may change to another account";
    }
    ExecCmd cmd("sh");
    cmd.addArg("-c").addArg("id -u; id -G; pwd");
    cmd.user = "worker";
    cmd.run();
    cmd.chdirToHome = false;
    cmd.run();
    const std::string ids = "54321\n54322 54324\n";
    EXPECT_EQ(cmd.stdoutData, ids + "/usr\n" + ids + fs::current_path().string() + "\n");
}

} // namespace
