#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include <sys/types.h>

namespace brask {

/// A file to which several processes append whole records.
///
/// What keeps the records apart is an advisory flock lock on the whole file, taken by every writer; it is
/// waited for without a limit. The lock belongs to the object: two objects on one file exclude each other
/// within one process too, and can so deadlock a thread that uses both. One object belongs to one thread.
///
/// A failed system call raises std::system_error with errno and a text that names the file; a request that
/// conflicts with the lock already held raises std::runtime_error.
class SharedFile final {
public:
    /// Opens `path`, making it with `mode` (less the umask) if absent, and gives it to `owner` and `group`
    /// whether or not it was there before; -1 leaves that one as it is. A file that can't be given away
    /// raises, and its descriptor stays open.
    SharedFile(const std::string& path, uid_t owner, gid_t group, mode_t mode);

    SharedFile(const SharedFile&) = delete;
    SharedFile& operator=(const SharedFile&) = delete;

    /// Gives up the lock and closes. Failures are logged.
    ~SharedFile();

    /// Take the lock if this object does not hold it already. A lock is never changed into the other kind:
    /// that raises.
    void lockExclusive();
    void lockShared();

    /// Harmless without a lock.
    void unlock();

    /// Writes `data` at the end of the file, under the exclusive lock: the one the caller holds, which then
    /// stays, or one for this call. Raises on an object that holds the shared lock. A failure in the middle,
    /// or a kill, may leave a part of `data` in the file.
    void Append(std::string data);

    /// The same for a line and its line feed, in a file of lines. Text after the last line feed stays,
    /// whoever wrote it, and becomes a line of its own.
    void AppendLine(const std::string& line);

private:
    enum class LockMode : std::int32_t { None, Exclusive, Shared };

    void lock(int operation, LockMode mode);
    void underExclusiveLock(const std::function<void()>& step);
    bool endsInsideLine() const;
    off_t seekEnd() const;
    void writeAtEnd(const std::string& data) const;
    [[noreturn]] void raiseSystemError(const char* messageTemplate) const;

    std::string path_;
    int fd_;
    // What this object holds; the kernel is not asked.
    LockMode lockMode_ = LockMode::None;
};

} // namespace brask
