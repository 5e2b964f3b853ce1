#include "backup_sign_lib/dump_file_stream.h"
#include "backup_sign_lib/sign_errors.h"
#include "tests/support/temp_dir.h"
#include "tests/support/thrown_text.h"

#include <gtest/gtest.h>

#include <random>

namespace {

using namespace brask;

/// Reads the whole stream in blocks of `block` bytes, each of them full but the last.
std::string readAll(const std::vector<std::string>& files, size_t limit, size_t block) {
    DumpFileStream stream(files, limit);
    std::string content;
    std::string buffer(block, '\0');
    while (const size_t count = stream.read(buffer.data(), block)) {
        EXPECT_EQ(content.size() % block, 0U) << "a short block in the middle";
        content.append(buffer, 0, count);
    }
    EXPECT_TRUE(stream.atEnd());
    return content;
}

TEST(DumpStream, IsTheConcatenationWithTheLastVolumeCutAtTheLimit) {
    const test_support::TempDir dir;
    std::mt19937 random(20);
    const auto upTo = [&random](size_t most) { return random() % (most + 1); };
    for (int round = 0; round < 200; ++round) {
        std::vector<std::string> files;
        std::string expected;
        size_t last = 0;
        for (size_t volumes = 1 + upTo(4); volumes > 0; --volumes) {
            // Empty volumes, and sizes round that of the library's own buffer, come up often.
            const size_t sizes[] = {0, upTo(9), 4095 + upTo(2), upTo(20000)};
            last = sizes[upTo(3)];
            std::string content(last, '\0');
            std::generate(content.begin(), content.end(), random);
            expected += content;
            files.push_back(dir.write("volume" + std::to_string(volumes), content));
        }
        const size_t limits[] = {0, last, upTo(last), last + upTo(5)};
        const size_t limit = limits[upTo(3)];
        if (limit != 0 && limit < last) {
            expected.resize(expected.size() - last + limit);
        }
        const size_t blocks[] = {1 + upTo(9), 4096, 1 + upTo(30000), 1048576};
        const size_t block = blocks[upTo(3)];
        ASSERT_EQ(readAll(files, limit, block), expected) << round << ", " << limit << ", " << block;
    }
}

TEST(DumpStream, VolumesThatCannotBeReadAreNamedOrEndTheStreamQuietly) {
    const test_support::TempDir dir;
    const std::string file = dir.write("file", "abc");
    std::filesystem::create_symlink("file", dir.path("good"));
    EXPECT_NO_THROW(checkFilesExistance({file, dir.path("good")}));
    EXPECT_THROW(checkFilesExistance({file, "/dev/null", "never looked at"}), Error<&IsNotRegularFileError>);
    const std::string missing = dir.path("missing");
    const auto read = [&] { readAll({file, missing, file}, 0, 10); };
    EXPECT_EQ(test_support::thrownText<Error<&SignError>>(read), "Cannot read file " + missing);
    EXPECT_EQ(readAll({file, dir.path()}, 0, 10), "abc"); // a directory opens and can't be read
}

} // namespace
