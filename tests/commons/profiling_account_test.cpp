#include "commons/profiling.h"
#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>

#include <grp.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

TEST(ProfilingFile, BelongsToThePanelsGroupWhichMayWrite) {
    if (getuid() != 0) {
        GTEST_SKIP() << "only root can give files away";
    }
    const test_support::TempDir dir;
    const mode_t umaskBefore = umask(0);
    const brask::ProfilingContext context(dir.path("profile.log"));
    umask(umaskBefore);

    struct stat info {};

    ASSERT_EQ(stat(dir.path("profile.log").c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 07777, 0660U);
    EXPECT_EQ(info.st_gid, getgrnam("bsaadm")->gr_gid);
    EXPECT_EQ(info.st_uid, 0U);
}

} // namespace
