#include "commons/files/file_guards.h"

#include "commons/files/file_utils.h"
#include "commons/log/log_facade.h"

#include <exception>
#include <filesystem>
#include <utility>

#include <unistd.h>

namespace brask {

void removeFileLogged(const std::string& path) {
    if (path.empty()) {
        return;
    }
    try {
        RemoveFile(path);
    } catch (const std::exception& e) {
        logMessage(level::kWarning, "Unable to delete the file '{}': {}", path, e.what());
    } catch (...) {
        logMessage(level::kWarning, "Unable to delete the file '{}'", path);
    }
}

TempFileGuard::TempFileGuard(std::string path, int fd) : path(std::move(path)), fd(fd) {}

TempFileGuard::~TempFileGuard() {
    if (fd >= 0) {
        close(fd);
    }
    removeFileLogged(path);
}

TempDirGuard::TempDirGuard(std::string path) : path(std::move(path)) {}

TempDirGuard::~TempDirGuard() {
    if (path.empty()) {
        return;
    }
    try {
        std::filesystem::remove_all(path);
    } catch (const std::exception& e) {
        logMessage(level::kWarning, "Unable to delete the directory '{}': {}", path, e.what());
    } catch (...) {
        logMessage(level::kWarning, "Unable to delete the directory '{}'", path);
    }
}

} // namespace brask
