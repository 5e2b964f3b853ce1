#pragma once

// Reading a dump: one file, or the volumes of a dump in their order, as a single stream of bytes.

#include "backup_sign_lib/digest.h"

#include <cstddef>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

namespace brask {

/// The volumes one after another with nothing between them, and, on request, without the end of the last.
class DumpFileStream {
public:
    /// `files` must outlive the stream. `limit` is the number of bytes to read from the last volume, counted
    /// from its start; 0 means all of it. The other volumes are always read whole.
    DumpFileStream(const std::vector<std::string>& files, size_t limit);

    /// Stores up to `size` bytes and returns their number, which is less than `size` at the end of the stream
    /// only. Raises SignError, whatever the stream is read for, when a volume can't be opened.
    ///
    /// A failed read is not reported. On the last volume, before its first byte and with no limit, it ends
    /// the volume; everywhere else it is tried again without end.
    size_t read(void* buffer, size_t size);

    bool atEnd() const { return current == files.end(); }

private:
    struct FileCloser {
        void operator()(FILE* stream) const { std::fclose(stream); }
    };

    void openVolume();
    void closeVolume();
    /// How much of `size` may be read from the open volume.
    size_t withinLimit(size_t size) const;
    /// Takes account of the bytes just read, and says whether they were the volume's last.
    bool volumeEndsAfter(size_t count);

    const std::vector<std::string>& files;
    /// The volume that is open, or the one to open next.
    std::vector<std::string>::const_iterator current;
    /// Null between volumes.
    std::unique_ptr<FILE, FileCloser> file;
    bool isLastVolume = false;
    size_t readFromVolume = 0;
    size_t limit;
};

/// Adds the stream of `files` with that limit to `digest`, in blocks of 1 MiB. Raises what the stream and the
/// digest raise; the digest is of no further use then.
void countDigest(const std::vector<std::string>& files, Digest& digest, size_t limit);

/// Raises FileNotFoundError or IsNotRegularFileError for the first path that is missing or is something other
/// than a regular file or a link to one. A path that can't be looked at raises
/// std::filesystem::filesystem_error.
// The spelling is part of the interface.
void checkFilesExistance(const std::vector<std::string>& files);

} // namespace brask
