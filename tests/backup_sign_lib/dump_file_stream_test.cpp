#include "backup_sign_lib/dump_file_stream.h"
#include "backup_sign_lib/sign_errors.h"
#include "tests/support/temp_dir.h"
#include "tests/support/thrown_text.h"

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <random>

namespace {

using namespace brask;
using test_support::thrownText;
using Files = std::vector<std::string>;

std::string bytes(size_t size, unsigned seed) {
    std::mt19937 random(seed);
    std::string text(size, '\0');
    for (char& c : text) {
        c = static_cast<char>(random());
    }
    return text;
}

/// Reads the whole stream in blocks of `block` bytes, each of them full but the last.
std::string readAll(const Files& files, size_t limit, size_t block) {
    DumpFileStream stream(files, limit);
    std::string content;
    std::string buffer(block, '\0');
    bool ended = false;
    while (const size_t count = stream.read(buffer.data(), block)) {
        EXPECT_FALSE(ended) << "a short block in the middle";
        ended = count < block;
        content.append(buffer, 0, count);
    }
    EXPECT_TRUE(stream.atEnd());
    return content;
}

class DumpStream : public testing::Test {
protected:
    Files write(const std::vector<std::string>& contents) const {
        Files files;
        for (const std::string& content : contents) {
            files.push_back(dir.write("volume" + std::to_string(files.size()), content));
        }
        return files;
    }

    test_support::TempDir dir;
};

TEST_F(DumpStream, IsTheConcatenationWithTheLastVolumeCutAtTheLimit) {
    std::mt19937 random(20);
    const auto upTo = [&random](size_t most) { return random() % (most + 1); };
    for (int round = 0; round < 200; ++round) {
        std::vector<std::string> contents(1 + upTo(4));
        std::string expected;
        for (std::string& content : contents) {
            // Empty volumes, and sizes round that of the library's own buffer, come up often.
            const size_t sizes[] = {0, upTo(9), 4095 + upTo(2), upTo(20000)};
            content = bytes(sizes[upTo(3)], random());
            expected += content;
        }
        const size_t last = contents.back().size();
        const size_t limits[] = {0, last, upTo(last), last + upTo(5)};
        const size_t limit = limits[upTo(3)];
        if (limit != 0 && limit < last) {
            expected.resize(expected.size() - last + limit);
        }
        const size_t blocks[] = {1 + upTo(9), 4096, 1 + upTo(30000), 1048576};
        const size_t block = blocks[upTo(3)];
        ASSERT_EQ(readAll(write(contents), limit, block), expected)
            << "round " << round << ", limit " << limit << ", block " << block;
    }
}

TEST_F(DumpStream, DigestTakesInBlocksThatEndWithTheVolumes) {
    const std::string content = bytes(2097152 + 17, 7);
    Digest whole;
    whole.update(content.data(), content.size());
    Digest digest;
    countDigest(write({content.substr(0, 1048576), "", content.substr(1048576) + "tail"}), digest,
                1048576 + 17);
    EXPECT_EQ(std::memcmp(digest.getValue(), whole.getValue(), whole.getSize()), 0);
}

TEST_F(DumpStream, NamesTheVolumeThatCannotBeOpened) {
    Files files = write({"a", "b"});
    files.insert(files.begin() + 1, dir.path("missing"));
    Digest digest;
    EXPECT_EQ(thrownText<Error<&SignError>>([&] { countDigest(files, digest, 0); }),
              "Cannot read file " + dir.path("missing"));
}

TEST_F(DumpStream, AnUnreadableLastVolumeEndsTheStreamQuietly) {
    // A directory opens and can't be read.
    Files files = write({"abc"});
    files.push_back(dir.path());
    EXPECT_EQ(readAll(files, 0, 10), "abc");
}

TEST_F(DumpStream, VolumesMustBeRegularFilesOrLinksToSuch) {
    const std::string file = dir.write("file", "x");
    const auto link = [this](const std::string& target, const std::string& name) {
        std::filesystem::create_symlink(target, dir.path(name));
        return dir.path(name);
    };
    EXPECT_NO_THROW(checkFilesExistance({file, link(file, "good")}));
    const auto check = [&](const std::string& path) {
        return [files = Files{file, path, "never looked at"}] { checkFilesExistance(files); };
    };
    for (const std::string& path : {dir.path("missing"), link("nowhere", "dangling")}) {
        EXPECT_EQ(thrownText<Error<&FileNotFoundError>>(check(path)), "File " + path + " not found");
    }
    for (const std::string& path : {dir.path(), std::string("/dev/null")}) {
        EXPECT_EQ(thrownText<Error<&IsNotRegularFileError>>(check(path)), path + " is not regular file");
    }
    EXPECT_THROW(check(link("loop", "loop"))(), std::filesystem::filesystem_error);
}

} // namespace
