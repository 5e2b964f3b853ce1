#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <system_error>

#include <stdlib.h>

namespace test_support {

/// Throws the error that errno holds unless a system call has succeeded.
inline void requireSuccess(bool succeeded, const std::string& what) {
    if (!succeeded) {
        throw std::system_error(errno, std::generic_category(), what);
    }
}

/// A directory of the test's own, removed with everything in it when the object dies.
class TempDir {
public:
    /// Makes the directory below `parent`, by default the system's temporary directory.
    explicit TempDir(const std::filesystem::path& parent = std::filesystem::temp_directory_path())
        : root(parent / "brask-test-XXXXXX") {
        requireSuccess(mkdtemp(root.data()) != nullptr, root);
    }

    TempDir(const TempDir&) = delete;

    ~TempDir() {
        std::error_code ignored;
        std::filesystem::remove_all(root, ignored);
    }

    std::string path() const { return root; }

    std::string path(const std::string& name) const { return root + "/" + name; }

    /// Writes `content` to the file `name`, making its folders, and returns the file's path.
    std::string write(const std::string& name, const std::string& content) const {
        const std::filesystem::path file = path(name);
        std::filesystem::create_directories(file.parent_path());
        std::ofstream(file, std::ios::binary) << content;
        return file;
    }

private:
    std::string root;
};

/// The whole content of a file; throws when it can't be opened.
inline std::string readFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    requireSuccess(file.is_open(), path);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

} // namespace test_support
