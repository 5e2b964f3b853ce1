#pragma once

// The file of a session's debug log. The session's directory may belong to somebody who swaps what lies in it
// for links: the file is made, or found, through one descriptor, and nothing is done to it by its name.

#include <string>

namespace brask {

class SessionLogFile {
public:
    /// Opens `path` for appending. A file that is absent is made, for the effective user and the group
    /// "bsaadm" with the mode 0640; one that is there keeps its owner and mode. Raises
    /// Error<&UnableToCreateSession, ExDefault> for a link, and for anything but a regular file. Whatever
    /// else is in the way leaves the session without a log.
    explicit SessionLogFile(const std::string& path);

    SessionLogFile(const SessionLogFile&) = delete;
    SessionLogFile& operator=(const SessionLogFile&) = delete;

    /// Closes the file. One that was made here vanishes, unless keep() was called or somebody has written to
    /// it.
    ~SessionLogFile();

    /// -1 when the file can't be opened.
    int descriptor() const { return fd; }

    void keep() { isKept = true; }

private:
    bool isUnusedAndOurs() const;

    const std::string path;
    bool isKept = false;
    int fd = -1;
};

} // namespace brask
