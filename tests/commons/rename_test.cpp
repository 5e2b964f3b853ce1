#include "commons/file_utils.h"
#include "commons/rename.h"
#include "tests/support/temp_dir.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include <sys/stat.h>

namespace {

using namespace brask;
using test_support::readFile;
using test_support::TempDir;
using ::testing::StartsWith;
namespace fs = std::filesystem;

/// A tree with a file, a link to it, a dangling link, a link to a directory, and a directory of mode 0750
/// with an executable file in it.
void makeTree(const TempDir& dir, const std::string& name) {
    dir.write(name + "/file", "content");
    dir.write(name + "/inner/deep/run", "#!/bin/sh\n");
    fs::create_symlink("file", dir.path(name + "/link"));
    fs::create_symlink("nowhere", dir.path(name + "/dangling"));
    fs::create_symlink("inner", dir.path(name + "/folder"));
    fs::permissions(dir.path(name + "/inner"), fs::perms(0750));
    fs::permissions(dir.path(name + "/inner/deep/run"), fs::perms(0755));
}

void expectTree(const std::string& root) {
    EXPECT_EQ(readFile(root + "/file"), "content");
    EXPECT_EQ(fs::read_symlink(root + "/link"), "file");
    EXPECT_EQ(fs::read_symlink(root + "/dangling"), "nowhere");
    EXPECT_EQ(fs::read_symlink(root + "/folder"), "inner");
    EXPECT_EQ(statFile(root + "/inner").st_mode & 0777, 0750U);
    EXPECT_EQ(statFile(root + "/inner/deep/run").st_mode & 0777, 0755U);
}

std::string renameError(const std::string& from, const std::string& to) {
    try {
        brask::rename(from, to);
        return "none";
    } catch (const Error<&CantRenameFile>& e) {
        return e.what();
    }
}

TEST(Rename, ReplacesATargetOnTheSameFileSystem) {
    const TempDir dir;
    const std::string from = dir.write("from", "new");
    brask::rename(from, dir.write("to", "old"));
    EXPECT_EQ(readFile(dir.path("to")), "new");
    EXPECT_FALSE(fs::exists(from));
}

TEST(Rename, NamesBothPathsWhenItFails) {
    const TempDir dir;
    const std::string from = dir.path("missing");
    EXPECT_THAT(renameError(from, dir.path("to")),
                StartsWith("Cannot rename " + from + " to " + dir.path("to") + ": "));
}

class RenameAcrossFileSystems : public ::testing::Test {
protected:
    void SetUp() override {
        if (statFile(here.path()).st_dev == statFile(there.path()).st_dev) {
            GTEST_SKIP() << "the temporary directory and /dev/shm are one file system";
        }
    }

    TempDir here;
    TempDir there{fs::is_directory("/dev/shm") ? "/dev/shm" : fs::temp_directory_path()};
};

TEST_F(RenameAcrossFileSystems, MovesAFile) {
    brask::rename(here.write("from", "content"), there.path("to"));
    EXPECT_EQ(readFile(there.path("to")), "content");
    EXPECT_FALSE(fs::exists(here.path("from")));
}

TEST_F(RenameAcrossFileSystems, KeepsBothFilesWhenTheTargetExists) {
    const std::string from = here.write("from", "new");
    const std::string to = there.write("to", "old");
    EXPECT_THAT(renameError(from, to), StartsWith("Cannot rename " + from + " to " + to + ": "));
    EXPECT_EQ(readFile(from), "new");
    EXPECT_EQ(readFile(to), "old");
}

TEST_F(RenameAcrossFileSystems, MovesADirectoryAndMergesItIntoAnExistingOne) {
    makeTree(here, "from");
    there.write("to/file", "old");
    there.write("to/kept", "kept");
    fs::create_symlink("elsewhere", there.path("to/dangling"));
    brask::rename(here.path("from"), there.path("to"));
    expectTree(there.path("to"));
    EXPECT_EQ(readFile(there.path("to/kept")), "kept");
    EXPECT_FALSE(fs::exists(here.path("from")));
}

using Copy = void (*)(const fs::path&, const fs::path&, bool);

class CopyDirectory : public ::testing::TestWithParam<Copy> {};

INSTANTIATE_TEST_SUITE_P(, CopyDirectory, ::testing::Values(copyDirectory, copyDirectoryRecursively),
                         [](const auto& info) { return info.index == 0 ? "Iterating" : "Recursing"; });

TEST_P(CopyDirectory, CopiesFilesLinksAndModes) {
    const TempDir dir;
    makeTree(dir, "from");
    ASSERT_EQ(mkfifo(dir.path("from/fifo").c_str(), 0600), 0);
    fs::permissions(dir.path("from"), fs::perms(0700));
    GetParam()(dir.path("from") + "/", dir.path("to"), false);
    expectTree(dir.path("to"));
    EXPECT_EQ(statFile(dir.path("to")).st_mode & 0777, 0700U);
    EXPECT_FALSE(fs::exists(dir.path("to/fifo")));
}

TEST_P(CopyDirectory, ReplacesWhatExistsOnlyWhenAsked) {
    const TempDir dir;
    makeTree(dir, "from");
    makeTree(dir, "to");
    dir.write("to/file", "old");
    EXPECT_THROW(GetParam()(dir.path("from"), dir.path("to"), false), fs::filesystem_error);
    EXPECT_EQ(readFile(dir.path("to/file")), "old");
    GetParam()(dir.path("from"), dir.path("to"), true);
    expectTree(dir.path("to"));
}

} // namespace
