#include "commons/file_utils.h"
#include "commons/temp_file.h"
#include "tests/commons/library_test.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>

namespace {

using namespace brask;
using namespace test_support;
using testing::MatchesRegex;

class TempFile : public RootTest {};

TEST_F(TempFile, NamesAndModesFollowOneScheme) {
    const std::string suffix = "[A-Za-z0-9]{6}";
    const std::string path = BMM_getTempFileName(dir.path() + "/", "x", false);
    EXPECT_THAT(path, MatchesRegex(dir.path("bmm-x-") + suffix));
    EXPECT_EQ(statFile(path).st_mode, S_IFREG | 0600U);
    EXPECT_THAT(BMM_getTempFileName(dir.path(), "exact", true), MatchesRegex(dir.path("exact") + suffix));
    const std::string made = BMM_makeTempFileDirectory(dir.path(), "d", false);
    EXPECT_THAT(made, MatchesRegex(dir.path("bmm-d-") + suffix));
    EXPECT_EQ(statFile(made).st_mode, S_IFDIR | 0700U);
    EXPECT_THAT(thrownText<Error<&CantCreateTempFile>>([] { BMM_getTempFile("", "x", false); }),
                MatchesRegex("Cannot create a temporary file with the template '" +
                             dir.path("BMM/tmp/bmm-x-......") + "': No such file or directory"));
    const std::string removed = BMMTmpFile(dir.path(), "s", true).name();
    EXPECT_FALSE(std::filesystem::exists(removed));
}

TEST_F(TempFile, ANameThatIsTakenIsDrawnAgain) {
    const int dirFd = open(dir.path().c_str(), O_RDONLY | O_DIRECTORY);
    const auto create = [&] {
        srand(7); // the same characters each time
        const auto [name, fd] = BMM_getTempFileAt(dir.path(), dirFd, "at");
        close(fd);
        return name;
    };
    EXPECT_NE(create(), create());
    close(dirFd);
}

TEST_F(TempFile, AFullFileSystemIsFatalAndNamesTheDirectoryAsGiven) {
    const auto outcome = inChild([&] {
        if (unshare(CLONE_NEWNS) != 0 || mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
            mount("none", dir.path().c_str(), "tmpfs", 0, "nr_inodes=1") != 0) {
            throw std::runtime_error("no mount");
        }
        const int dirFd = open(dir.path().c_str(), O_RDONLY | O_DIRECTORY);
        using Full = Error<&NotEnoughSpaceAt, ExFatal>;
        puts(thrownText<Full>([&] { BMM_getTempFile(dir.path(), "x", false); }).c_str());
        puts(thrownText<Full>([&] { BMM_getTempFileAt(dir.path(), dirFd, "x"); }).c_str());
        puts(thrownText<Full>([&] { BMM_makeTempFileDirectory(dir.path(), "x", false); }).c_str());
    });
    if (outcome.err == "no mount") {
        GTEST_SKIP() << "this machine lets nobody mount";
    }
    const std::string text = "Selected filesystem at " + dir.path() +
                             " has only 0 bytes free, but 4096 bytes are needed for operation\n";
    EXPECT_EQ(outcome.out, text + text + text) << outcome.err;
}

} // namespace
