#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <system_error>

#include <stdlib.h>

namespace test_support {

/// A directory of the test's own, removed with everything in it when the object dies.
class TempDir {
public:
    /// Makes the directory below `parent`, by default the system's temporary directory.
    explicit TempDir(const std::filesystem::path& parent = std::filesystem::temp_directory_path()) {
        std::string pattern = (parent / "brask-test-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) {
            throw std::system_error(errno, std::generic_category(), pattern);
        }
        root = pattern;
    }

    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    ~TempDir() {
        std::error_code ignored;
        std::filesystem::remove_all(root, ignored);
    }

    std::string path() const { return root.string(); }

    std::string path(const std::string& name) const { return (root / name).string(); }

    /// Writes `content` to the file `name`, making its folders, and returns the file's path.
    std::string write(const std::string& name, const std::string& content) const {
        const std::filesystem::path file = root / name;
        std::filesystem::create_directories(file.parent_path());
        std::ofstream(file, std::ios::binary) << content;
        return file.string();
    }

private:
    std::filesystem::path root;
};

/// The whole content of a file; throws when it can't be opened.
inline std::string readFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        throw std::runtime_error("cannot read " + path);
    }
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

} // namespace test_support
