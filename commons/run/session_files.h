#pragma once

// A session: a directory that the caller of a tool names, and in which the tools of one operation leave their
// log, result and status files. It outlives the run.

#include "commons/errors/error.h"

#include <string>

namespace brask {

BRASK_ERROR_TAG(UnableToCreateSession, "Unable to create session: {}")

/// For a session directory, or what must be in it, that can't be used as it is.
[[noreturn]] void throwUnusableSession();

class SessionFiles {
public:
    /// Takes the directory `path` as it is, or makes it and its missing parents with owner root, the group
    /// "bsaadm" (root's if there is none) and the mode 0750 as reduced by the umask. Raises
    /// Error<&UnableToCreateSession, ExDefault> when there is no directory in the end, and
    /// std::filesystem::filesystem_error when the path can't be looked at.
    explicit SessionFiles(const std::string& path);

    /// The directory, as the caller gave it.
    const std::string& getPath() const { return path_; }

    /// The files of a session. None of these functions touches the disk.
    std::string getLogFile() const;    ///< the debug log
    std::string getResultFile() const; ///< the XML execution log
    // The others are written by other tools.
    std::string getStatusFile() const;
    std::string getAgentDeploymentStatusFile() const;
    std::string getDumpFile() const;
    std::string getRestoreFile() const;
    std::string getTaskStoppedFile() const; ///< a marker

    /// Removes the directory with everything in it. Raises std::filesystem::filesystem_error.
    void remove();

private:
    std::string path_;
};

/// The session of this process, null when it has none. Owned by SessionLifetimeController.
extern SessionFiles* session;

/// Opens the session of this process, and closes it at its end; what is on the disk stays. At most one at a
/// time.
class SessionLifetimeController {
public:
    /// Raises what SessionFiles raises; `session` then stays as it was.
    explicit SessionLifetimeController(const std::string& path);
    SessionLifetimeController(const SessionLifetimeController&) = delete;
    SessionLifetimeController& operator=(const SessionLifetimeController&) = delete;
    ~SessionLifetimeController();
};

} // namespace brask
