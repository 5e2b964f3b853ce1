#pragma once

// Temporary files and directories, under one naming scheme: "bmm-", a stem, "-" and six characters that make
// the name new. Nothing is registered or cleaned up: a file stays until its caller (or a BMMTmpFile that was
// told to) removes it, and the prefix is what an operator recognises one by that a dead process has left.
//
// `dir` is where to put it; an empty one means the parameter DUMP_TMP_D, or getBmmTmpDir() when there is no
// such parameter; that raises Error<&ParamError, ExDefault> when there is no product root either. `name` is
// the stem and may be empty. With `exactName` the stem is used without its decoration, followed directly by
// the six characters.
//
// Files have mode 0600, directories 0700; their owner is the effective user. All of the functions raise
// Error<&NotEnoughSpaceAt, ExFatal> with `dir` as it was given when the file system or a quota is full, which
// handlers of the general kind let pass, and CantCreateTempFile or CantCreateTempDir when anything else goes
// wrong.

#include "commons/errors/error.h"

#include <fstream>
#include <string>
#include <utility>

namespace brask {

BRASK_ERROR_TAG(CantCreateTempFile, "Cannot create a temporary file with the template '{}': {}")
BRASK_ERROR_TAG(CantCreateTempDir, "Cannot create a temporary dir with the template '{}': {}.")

/// Creates a file and opens it for reading and writing. Returns its path, and the descriptor, which is the
/// caller's to close.
std::pair<std::string, int> BMM_getTempFile(const std::string& dir, const std::string& name, bool exactName);

/// The same without the descriptor: the file stays, empty and closed.
std::string BMM_getTempFileName(const std::string& dir, const std::string& name, bool exactName);

/// The same relative to the open directory `dirFd`; `dirPath` is its name for messages only. Returns the bare
/// file name. Draws characters until the name is new, from rand(), which this unit does not seed.
std::pair<std::string, int> BMM_getTempFileAt(const std::string& dirPath, int dirFd, const std::string& name);

/// Creates a directory and returns its path.
std::string BMM_makeTempFileDirectory(const std::string& dir, const std::string& name, bool exactName);

/// A temporary file as a stream for reading and writing; every insertion reaches the file at once.
class BMMTmpFile : public std::fstream {
public:
    /// Raises as BMM_getTempFileName, and CantCreateTempFile when the file was created but cannot be opened:
    /// it stays then.
    BMMTmpFile(const std::string& dir, const std::string& name, bool removeOnClose);

    BMMTmpFile(const BMMTmpFile&) = delete;
    BMMTmpFile& operator=(const BMMTmpFile&) = delete;

    /// Closes the file and, with `removeOnClose`, removes it; without, it is the caller's.
    ~BMMTmpFile() override;

    /// The full path.
    const std::string& name() const { return name_; }

private:
    std::string name_;
    bool removeOnClose_;
};

} // namespace brask
