#include "commons/temp_file.h"
#include "tests/support/child.h"
#include "tests/support/fixed_params.h"
#include "tests/support/temp_dir.h"
#include "tests/support/thrown_text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>

namespace {

using namespace brask;
using test_support::FixedParams;
using test_support::readFile;
using test_support::TempDir;
using test_support::thrownText;
using testing::MatchesRegex;

class TempFile : public testing::Test {
protected:
    mode_t modeOf(const std::string& path) const {
        struct stat info {};

        EXPECT_EQ(stat(path.c_str(), &info), 0) << path;
        return info.st_mode;
    }

    TempDir dir;
};

TEST_F(TempFile, NamesAndModesFollowOneScheme) {
    const std::string suffix = "[A-Za-z0-9]{6}";
    const auto [path, fd] = BMM_getTempFile(dir.path(), "x", false);
    EXPECT_THAT(path, MatchesRegex(dir.path("bmm-x-") + suffix));
    EXPECT_EQ(write(fd, "data", 4), 4);
    EXPECT_EQ(close(fd), 0);
    EXPECT_EQ(readFile(path), "data");
    EXPECT_EQ(modeOf(path), S_IFREG | 0600U);

    EXPECT_THAT(BMM_getTempFileName(dir.path() + "/", "", false), MatchesRegex(dir.path("bmm--") + suffix));
    EXPECT_THAT(BMM_getTempFileName(dir.path(), "exact", true), MatchesRegex(dir.path("exact") + suffix));
    const std::string made = BMM_makeTempFileDirectory(dir.path(), "d", false);
    EXPECT_THAT(made, MatchesRegex(dir.path("bmm-d-") + suffix));
    EXPECT_EQ(modeOf(made), S_IFDIR | 0700U);
}

TEST_F(TempFile, TheDefaultDirectoryIsTheParametersOrTheProducts) {
    {
        const FixedParams params({{"DUMP_TMP_D", dir.path()}});
        EXPECT_THAT(BMM_getTempFileName("", "x", false), MatchesRegex(dir.path("bmm-x-......")));
    }
    const FixedParams params({{"PRODUCT_ROOT_D", dir.path()}});
    EXPECT_THAT(thrownText<Error<&CantCreateTempFile>>([] { BMM_getTempFile("", "x", false); }),
                MatchesRegex("Cannot create a temporary file with the template '" +
                             dir.path("BMM/tmp/bmm-x-......") + "': No such file or directory"));
    const FixedParams root(FixedParams::Values{{"DUMP_TMP_D", ""}});
    EXPECT_THAT(thrownText<Error<&CantCreateTempDir>>([] { BMM_makeTempFileDirectory("", "no/x", false); }),
                MatchesRegex("Cannot create a temporary dir with the template '/bmm-no/x-......': "
                             "No such file or directory\\."));
}

TEST_F(TempFile, ANameThatIsTakenIsDrawnAgain) {
    const int dirFd = open(dir.path().c_str(), O_RDONLY | O_DIRECTORY);
    ASSERT_GE(dirFd, 0);
    const auto create = [&] {
        srand(7); // the same characters each time
        const auto [name, fd] = BMM_getTempFileAt(dir.path(), dirFd, "at");
        close(fd);
        return name;
    };
    const std::string first = create();
    const std::string second = create();
    EXPECT_THAT(first, MatchesRegex("bmm-at-[A-Za-z0-9]{6}"));
    EXPECT_NE(first, second);
    EXPECT_EQ(modeOf(dir.path(second)), S_IFREG | 0600U);
    close(dirFd);

    EXPECT_THAT(
        thrownText<Error<&CantCreateTempFile>>([&] { BMM_getTempFileAt("/shown", dirFd, "at"); }),
        MatchesRegex("Cannot create a temporary file with the template '/shown/bmm-at-......': Bad file "
                     "descriptor"));
}

TEST_F(TempFile, AFullFileSystemIsFatalAndNamesTheDirectoryAsGiven) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "only root can mount a file system to fill";
    }
    const std::string mountPoint = dir.path();
    const auto outcome = test_support::inChild([&] {
        if (unshare(CLONE_NEWNS) != 0 || mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
            mount("none", mountPoint.c_str(), "tmpfs", 0, "nr_inodes=1") != 0) {
            puts("no mount");
            return;
        }
        const FixedParams params({{"DUMP_TMP_D", mountPoint}});
        const int dirFd = open(mountPoint.c_str(), O_RDONLY | O_DIRECTORY);
        const auto tell = [](auto create) {
            try {
                create();
            } catch (const Error<&NotEnoughSpaceAt, ExFatal>& e) {
                puts(e.what());
            }
        };
        tell([] { BMM_getTempFile("", "x", false); });
        tell([&] { BMM_getTempFileAt("/shown", dirFd, "x"); });
        tell([&] { BMM_makeTempFileDirectory(mountPoint, "x", false); });
    });
    if (outcome.out == "no mount\n") {
        GTEST_SKIP() << "this machine lets nobody mount";
    }
    const auto text = [](const std::string& where) {
        return "Selected filesystem at " + where +
               " has only 0 bytes free, but 4096 bytes are needed for operation\n";
    };
    EXPECT_EQ(outcome.out, text("") + text("/shown") + text(mountPoint)) << outcome.err;
}

TEST_F(TempFile, AStreamWritesAtOnceAndRemovesItsFileIfToldTo) {
    std::string kept;
    std::string removed;
    {
        BMMTmpFile stream(dir.path(), "s", false);
        kept = stream.name();
        stream << "text";
        EXPECT_EQ(readFile(kept), "text");
        removed = BMMTmpFile(dir.path(), "s", true).name();
    }
    EXPECT_TRUE(std::filesystem::exists(kept));
    EXPECT_THAT(removed, MatchesRegex(dir.path("bmm-s-......")));
    EXPECT_FALSE(std::filesystem::exists(removed));
}

} // namespace
