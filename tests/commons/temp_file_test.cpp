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

class TempFile : public RootTest {
protected:
    std::string createAt() const {
        srand(7); // the same characters each time
        const int dirFd = open(dir.path().c_str(), O_RDONLY | O_DIRECTORY);
        return BMM_getTempFileAt(dir.path(), dirFd, "at").first;
    }
};

TEST_F(TempFile, NamesAndModesFollowOneSchemeAndATakenNameIsDrawnAgain) {
    const std::string path = BMM_getTempFileName(dir.path() + "/", "x", false);
    EXPECT_THAT(path, MatchesRegex(dir.path("bmm-x-[A-Za-z0-9]{6}")));
    EXPECT_EQ(statFile(path).st_mode, S_IFREG | 0600U);
    EXPECT_THAT(BMM_getTempFileName(dir.path(), "exact", true),
                MatchesRegex(dir.path("exact[A-Za-z0-9]{6}")));
    EXPECT_EQ(statFile(BMM_makeTempFileDirectory(dir.path(), "d", false)).st_mode, S_IFDIR | 0700U);
    EXPECT_THAT(thrownText<Error<&CantCreateTempFile>>([] { BMM_getTempFile("", "x", false); }),
                MatchesRegex("Cannot create a temporary file with the template '" +
                             dir.path("BMM/tmp/bmm-x-......': No such file or directory")));
    const std::string removed = BMMTmpFile(dir.path(), "s", true).name();
    EXPECT_FALSE(std::filesystem::exists(removed));
    EXPECT_NE(createAt(), createAt());
}

TEST_F(TempFile, AFullFileSystemIsFatalAndNamesTheDirectory) {
    const auto outcome = inChild([&] {
        if (unshare(CLONE_NEWNS) != 0 || mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
            mount("none", dir.path().c_str(), "tmpfs", 0, "nr_inodes=1") != 0) {
            throw std::runtime_error("no mount");
        }
        using Full = Error<&NotEnoughSpaceAt, ExFatal>;
        puts(thrownText<Full>([&] { BMM_getTempFile(dir.path(), "x", false); }).c_str());
        puts(thrownText<Full>([&] { createAt(); }).c_str());
        puts(thrownText<Full>([&] { BMM_makeTempFileDirectory(dir.path(), "x", false); }).c_str());
    });
    const std::string text = "Selected filesystem at " + dir.path() +
                             " has only 0 bytes free, but 4096 bytes are needed for operation\n";
    EXPECT_TRUE(outcome.out == text + text + text || outcome.err == "no mount") << outcome.out;
}

} // namespace
