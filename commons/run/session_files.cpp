#include "commons/run/session_files.h"

#include "commons/files/file_utils.h"
#include "commons/panel/product_paths.h"
#include "lib/process/lib/identity.h"

#include <filesystem>

namespace brask {

namespace {

constexpr mode_t kDirectoryMode = 0750;
// The account's usual name, whatever the parameter BSAADM says.
constexpr const char* kGroup = "bsaadm";

} // namespace

SessionFiles* session = nullptr;

void throwUnusableSession() {
    BRASK_THROW(UnableToCreateSession, "Unable to create session directory");
}

SessionFiles::SessionFiles(const std::string& path) : path_(path) {
    const std::filesystem::path directory(path);
    if (!std::filesystem::exists(std::filesystem::status(directory))) {
        make_dir(path_, 0, groupId(kGroup), kDirectoryMode);
    }
    // make_dir hides its failures: this is where they show, and where a file in place of a directory does.
    // The owner and the mode of a directory that was there already are its maker's business.
    if (!std::filesystem::is_directory(directory)) {
        throwUnusableSession();
    }
}

std::string SessionFiles::getLogFile() const {
    return joinPath(path_, "migration.log");
}

std::string SessionFiles::getResultFile() const {
    return joinPath(path_, "migration.result");
}

std::string SessionFiles::getStatusFile() const {
    return joinPath(path_, "migration.status");
}

std::string SessionFiles::getAgentDeploymentStatusFile() const {
    return joinPath(path_, "agent-deployment.status");
}

std::string SessionFiles::getDumpFile() const {
    return joinPath(path_, "dump.xml");
}

std::string SessionFiles::getRestoreFile() const {
    return joinPath(path_, "restore.xml");
}

std::string SessionFiles::getTaskStoppedFile() const {
    return joinPath(path_, "task_stopped");
}

void SessionFiles::remove() {
    std::filesystem::remove_all(path_);
}

SessionLifetimeController::SessionLifetimeController(const std::string& path) {
    session = new SessionFiles(path);
}

SessionLifetimeController::~SessionLifetimeController() {
    delete session;
    session = nullptr;
}

} // namespace brask
