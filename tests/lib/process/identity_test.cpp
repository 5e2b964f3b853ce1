#include "lib/process/lib/identity.h"
#include "lib/process/lib/spawn.h"
#include "lib/runtime/low_level_log.h"
#include "tests/support/child.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

#include <linux/capability.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

using namespace brask;
using test_support::ChildOutcome;
using test_support::inChild;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

std::vector<std::string> logged;

__attribute__((format(printf, 2, 3))) void recordLine(int priority, const char* format, ...) {
    char text[512];
    va_list args;
    va_start(args, format);
    vsnprintf(text, sizeof text, format, args);
    va_end(args);
    logged.push_back(std::to_string(priority) + "|" + text);
}

class LookUp : public testing::Test {
protected:
    void SetUp() override {
        logged.clear();
        logWrite = recordLine;
    }

    void TearDown() override { logWrite = previous; }

private:
    decltype(logWrite) previous = logWrite;
};

TEST_F(LookUp, UsersAreFoundByNameAndById) {
    uid_t uid = 0;
    gid_t gid = 0;
    char* home = nullptr;
    EXPECT_EQ(lookupUser("worker", &uid, &gid, &home), 0);
    EXPECT_EQ(uid, 54321U);
    EXPECT_EQ(gid, 54322U);
    EXPECT_STREQ(home, "/usr");
    EXPECT_EQ(lookupUser("worker", nullptr, nullptr, nullptr), 0);
    EXPECT_EQ(idOfUser("worker", 0), 54321U);
    EXPECT_EQ(idOfUser("worker", 1), 54322U);
    EXPECT_EQ(uidOfUser("worker"), 54321U);
    EXPECT_STREQ(userNameOfId(54321), "worker");
    EXPECT_STREQ(userNameOfId(4000000000U), "4000000000");
    EXPECT_THAT(logged, IsEmpty());
}

TEST_F(LookUp, UnknownUsersReadAsRootAfterALogLine) {
    EXPECT_EQ(lookupUser("nobody-here", nullptr, nullptr, nullptr), -1);
    EXPECT_EQ(idOfUser("nobody-here", 0), 0U);
    EXPECT_EQ(uidOfUser("nobody-here"), 0U);
    ASSERT_EQ(logged.size(), 3U);
    EXPECT_EQ(logged[0], "3|Unable to getpwnam for user nobody-here");
    EXPECT_EQ(logged[1], logged[0]);
    EXPECT_THAT(logged[2], StartsWith("3|Unable to find uid for user nobody-here: "));
}

TEST_F(LookUp, GroupsAreFoundByNameAndDigitsAreAnId) {
    const struct {
        const char* nameOrId;
        bool found;
        gid_t gid;
        const char* line;
    } cases[] = {{"workers", true, 54322, ""},
                 {"54324", true, 54324, ""},
                 {"0", true, 0, ""},
                 {"", false, 0, ""},
                 {nullptr, false, 0, ""},
                 {"4711", false, 0, "3|getgrgid(4711): "}, // a group has this name, but no group this id
                 {"54324x", false, 0, "3|getgrnam(54324x): "}};

    for (const auto& c : cases) {
        logged.clear();
        bool found = !c.found;
        EXPECT_EQ(groupIdChecked(c.nameOrId, &found), c.gid) << c.line;
        EXPECT_EQ(found, c.found) << c.line;
        ASSERT_EQ(logged.size(), *c.line != '\0' ? 1U : 0U);
        EXPECT_THAT(logged.empty() ? "" : logged[0], StartsWith(c.line));
    }
    EXPECT_EQ(groupId("helpers"), 54324U);
}

void printIdentity() {
    gid_t groups[8];
    const int count = getgroups(8, groups);
    char* directory = getcwd(nullptr, 0);
    printf("%u %u %s", getuid(), getgid(), directory);
    for (int i = 0; i < count; ++i) {
        printf(" %u", groups[i]);
    }
    free(directory);
}

/// Gives up one capability of a process that runs as root.
void dropCapability(unsigned capability) {
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct data[2];
    syscall(SYS_capget, &header, data);
    data[0].effective &= ~(1U << capability);
    syscall(SYS_capset, &header, data);
}

TEST(Switch, FailuresEndTheProcessAndSayWhy) {
    const std::string name = std::string(program_invocation_short_name) + ": ";

    const struct {
        const char* user;
        unsigned flags;
        const char* text;
    } cases[] = {
        {"nobody-here", 0, "User 'nobody-here' not found"},
        {"homeless", kSetuidChangeDirectory, "Cannot chdir to 'homeless' homedir '/nonexistent/home'"},
        {"homeless", kSetuidChangeRoot, "Cannot chroot to 'homeless' homedir '/nonexistent/home'"},
        {"root", 0, "Cannot run as forbidden uid: 0\n"},
        {"worker", 0, "Unable to init new groups for user 'worker': "},
    };

    for (const auto& c : cases) {
        const auto child = inChild([&] {
            if (geteuid() == 0 && std::string(c.user) == "worker") {
                dropCapability(CAP_SETGID);
            }
            p_setuid_core(c.user, c.flags);
        });
        EXPECT_EQ(child.exitCode, 1) << c.text;
        EXPECT_THAT(child.err, StartsWith(name + c.text));
        EXPECT_EQ(child.out, child.err);
    }
}

class SwitchAsRoot : public testing::Test {
protected:
    void SetUp() override {
        if (geteuid() != 0) {
            GTEST_SKIP() << "only root may change to another account";
        }
    }
};

TEST_F(SwitchAsRoot, TakesGroupsGroupAndUser) {
    EXPECT_EQ(inChild([] {
                  p_setuid_home("worker");
                  printIdentity();
              }).out,
              "54321 54322 /usr 54322 54324");
    EXPECT_EQ(inChild([] {
                  if (chdir("/") == 0 && p_setuid("homeless", 0, 0) == 0) {
                      printIdentity();
                  }
              }).out,
              "54323 54322 / 54322");
    EXPECT_EQ(inChild([] { printf("%d", p_setuid("root", 0, 1)); }).out, "0");
}

TEST_F(SwitchAsRoot, NeverGoesOnAsTheUserItWas) {
    const auto child = inChild([] {
        dropCapability(CAP_SETUID);
        p_setuid("worker", 0, 0);
        puts("went on");
    });
    EXPECT_EQ(child.exitCode, 1);
    EXPECT_EQ(child.out, std::string(program_invocation_short_name) +
                             ": Failed to setuid: 54321\n\nSystem error 1: Operation not permitted\n");
}

TEST_F(SwitchAsRoot, ASpawnedChildRunsAsTheAccountItIsToldTo) {
    std::string output;
    std::string error;
    EXPECT_EQ(forkExecvGetOutErr(output, error, {"sh", "-c", "id -u; id -G; pwd"}, "worker", true, {}), 0);
    EXPECT_EQ(output, "54321\n54322 54324\n/usr\n");
}

} // namespace
