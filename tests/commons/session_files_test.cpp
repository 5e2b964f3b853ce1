#include "commons/file_utils.h"
#include "commons/session.h"
#include "tests/support/temp_dir.h"
#include "tests/support/thrown_text.h"

#include <gtest/gtest.h>

#include <filesystem>

#include <sys/stat.h>
#include <unistd.h>

namespace {

using namespace brask;
using test_support::TempDir;
using test_support::thrownText;
namespace fs = std::filesystem;

std::string failureOf(const std::string& path) {
    return thrownText<Error<&UnableToCreateSession>>([&path] { const SessionFiles files(path); });
}

TEST(Session, DirectoryAndItsParentsBelongToTheAdministrators) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "only root can give a directory to a group that it is not in";
    }
    const TempDir dir;
    const mode_t before = umask(027);
    const SessionFiles files(dir.path("a/b"));
    umask(before);
    for (const char* name : {"a", "a/b"}) {
        const struct stat made = statFile(dir.path(name));
        EXPECT_EQ(made.st_uid, 0U) << name;
        EXPECT_EQ(made.st_gid, 54330U) << name;
        EXPECT_EQ(made.st_mode & 07777, 0750U) << name;
    }
}

TEST(Session, DirectoryThatExistsIsTakenAsItIs) {
    const TempDir dir;
    fs::permissions(dir.path(), fs::perms(0711));
    const struct stat before = statFile(dir.path());
    const SessionFiles files(dir.path() + "/");
    const struct stat after = statFile(dir.path());
    EXPECT_EQ(after.st_mode, before.st_mode);
    EXPECT_EQ(after.st_gid, before.st_gid);
    EXPECT_EQ(files.getLogFile(), dir.path("migration.log"));
    EXPECT_EQ(files.getResultFile(), dir.path("migration.result"));
    EXPECT_EQ(files.getStatusFile(), dir.path("migration.status"));
    EXPECT_EQ(files.getAgentDeploymentStatusFile(), dir.path("agent-deployment.status"));
    EXPECT_EQ(files.getDumpFile(), dir.path("dump.xml"));
    EXPECT_EQ(files.getRestoreFile(), dir.path("restore.xml"));
    EXPECT_EQ(files.getTaskStoppedFile(), dir.path("task_stopped"));
}

TEST(Session, FailsWhenThereIsNoDirectoryInTheEnd) {
    const TempDir dir;
    const std::string expected = "Unable to create session: Unable to create session directory";
    EXPECT_EQ(failureOf(dir.write("file", "")), expected);
    EXPECT_EQ(failureOf("/proc/no/such"), expected);
    EXPECT_EQ(failureOf(""), expected);
    // A path that can't be looked at is another matter.
    EXPECT_THROW(const SessionFiles files(dir.path(std::string(5000, 'x'))), fs::filesystem_error);
}

TEST(Session, LastsAsLongAsItsControllerAndLongerOnDisk) {
    const TempDir dir;
    EXPECT_EQ(session, nullptr);
    EXPECT_THROW(const SessionLifetimeController failed(dir.write("file", "")),
                 Error<&UnableToCreateSession>);
    EXPECT_EQ(session, nullptr);
    {
        const SessionLifetimeController controller(dir.path("s"));
        ASSERT_NE(session, nullptr);
        EXPECT_EQ(session->getLogFile(), dir.path("s/migration.log"));
        dir.write("s/migration.log", "");
    }
    EXPECT_EQ(session, nullptr);
    EXPECT_TRUE(fs::exists(dir.path("s/migration.log")));
    SessionFiles(dir.path("s")).remove();
    EXPECT_FALSE(fs::exists(dir.path("s")));
}

} // namespace
