#pragma once

#include "dumpsig/attendant.h"
#include "dumpsig/descriptor.h"

#include <string>
#include <string_view>

namespace dumpsig {

/// A file that appears under its name when it is complete, and not at all otherwise. It is written beside its
/// place, with the mode that the umask leaves. Failures are SystemErrors and FileErrors that name it.
class NewFile final {
public:
    /// Refuses a place that is taken unless `replace` is set, and then anything but a regular file or a
    /// symbolic link, which is replaced itself.
    NewFile(std::string path, bool replace, Attendant& attendant);
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;
    /// Removes what was written, unless it was committed.
    ~NewFile();

    void write(std::string_view bytes) const;

    /// Puts the file into its place, safe against a crash.
    void commit();

private:
    const std::string path;
    const bool replace;
    Attendant& attendant;
    const std::string temporaryPath;
    const Descriptor file;
    bool committed = false;
};

} // namespace dumpsig
