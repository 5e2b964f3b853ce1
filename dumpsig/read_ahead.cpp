#include "dumpsig/read_ahead.h"

#include "dumpsig/output.h"

#include <array>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <system_error>
#include <thread>

namespace dumpsig {

namespace {

/// Few enough to stay in a core's cache, where the copy puts the bytes and the hash finds them.
constexpr std::size_t kBlockSize = 128 * 1024;
constexpr std::size_t kBlocks = 6;

/// How many blocks must be free for the thread to be woken, which costs as much as copying a good part of
/// one.
constexpr std::size_t kBatch = 3;

/// What is read into. On a page of its own, because the copy out of the page cache into memory that starts
/// within a cache line costs as much as the hash.
struct alignas(4096) Buffer {
    std::array<char, kBlockSize> bytes;
};

/// The volumes in their order, block by block.
class Source {
public:
    Source(Volumes volumes, ByteCounter progress)
        : volumes(std::move(volumes)), progress(std::move(progress)) {}

    /// Fills `buffer` from one volume. Nothing at the end of the last.
    std::optional<ReadAhead::Block> fill(Buffer& buffer);

private:
    std::size_t fillFrom(InputFile& volume, Buffer& buffer);
    void closeVolume();

    const Volumes volumes;
    const ByteCounter progress;
    std::size_t current = 0;
    std::optional<InputFile> file;
    std::uint64_t readFromVolume = 0;
};

std::optional<ReadAhead::Block> Source::fill(Buffer& buffer) {
    if (current == volumes.size()) {
        return std::nullopt;
    }
    if (!file) {
        file.emplace(volumes[current].path);
    }
    const ReadAhead::Block block{.bytes = {buffer.bytes.data(), fillFrom(*file, buffer)}, .volume = current};
    if (block.bytes.size() < kBlockSize) {
        closeVolume();
    }
    return block;
}

std::size_t Source::fillFrom(InputFile& volume, Buffer& buffer) {
    std::size_t total = 0;
    while (total < kBlockSize) {
        const std::size_t count = volume.readSome(buffer.bytes.data() + total, kBlockSize - total);
        if (count == 0) {
            break;
        }
        total += count;
        progress->fetch_add(count, std::memory_order_relaxed);
    }
    readFromVolume += total;
    return total;
}

void Source::closeVolume() {
    const Volume& volume = volumes[current];
    if (volume.size && readFromVolume < *volume.size) {
        BRASK_THROW(FileError, file.value().name(), "shrank while it was read");
    }
    file.reset();
    readFromVolume = 0;
    ++current;
}

} // namespace

/// What the caller and the thread share. It lives as long as either of them.
///
/// Both read, one at a time: the caller itself reads the block that it needs when the thread is not at it. So
/// a thread that the system leaves waiting for a processor costs nothing but its help.
class ReadAhead::Pipeline : public std::enable_shared_from_this<Pipeline> {
public:
    Pipeline(const Volumes& volumes, ByteCounter progress) : source(volumes, std::move(progress)) {}

    std::optional<Block> next();
    void stop();

private:
    struct Slot {
        Buffer buffer;
        /// Nothing for the end of the source.
        std::optional<Block> block;
        std::exception_ptr failure;
    };

    void startThread();
    void readAhead();
    void readBlock(std::unique_lock<std::mutex>& lock);
    void fill(Slot& slot);

    std::size_t room() const { return kBlocks - filled - (isCallerAtOne ? 1 : 0); }

    bool isOver() const { return stopped || ended; }

    std::mutex mutex;
    std::condition_variable roomMade;
    std::condition_variable readingDone;
    /// A ring, whose filled slots begin at `first`; the one before that is the caller's.
    std::array<Slot, kBlocks> slots;
    std::size_t first = 0;
    std::size_t filled = 0;
    bool isCallerAtOne = false;
    /// Somebody is at the source, and at the first slot that is not filled, without the mutex.
    bool reading = false;
    bool ended = false;
    bool stopped = false;
    std::once_flag threadStarted;
    Source source;
};

std::optional<ReadAhead::Block> ReadAhead::Pipeline::next() {
    std::unique_lock lock(mutex);
    isCallerAtOne = false;
    if (!reading && room() >= kBatch) {
        roomMade.notify_one();
    }
    readingDone.wait(lock, [this] { return filled > 0 || !reading; });
    if (filled == 0) {
        readBlock(lock);
    }
    const Slot& slot = slots[first];
    first = (first + 1) % kBlocks;
    --filled;
    isCallerAtOne = true;
    if (slot.failure) {
        std::rethrow_exception(slot.failure);
    }
    if (slot.block && slot.block->bytes.size() == kBlockSize) {
        // Less is read faster than a thread starts.
        std::call_once(threadStarted, [this] { startThread(); });
    }
    return slot.block;
}

void ReadAhead::Pipeline::stop() {
    const std::scoped_lock lock(mutex);
    stopped = true;
    roomMade.notify_one();
}

void ReadAhead::Pipeline::startThread() {
    try {
        std::thread([self = shared_from_this()] { self->readAhead(); }).detach();
    } catch (const std::system_error&) {
        // The system has no thread to give, so the caller goes on reading alone.
    }
}

void ReadAhead::Pipeline::readAhead() {
    std::unique_lock lock(mutex);
    while (!isOver()) {
        roomMade.wait(lock, [this] { return isOver() || (!reading && room() >= kBatch); });
        while (!isOver() && !reading && room() > 0) {
            readBlock(lock);
            readingDone.notify_one();
        }
    }
}

void ReadAhead::Pipeline::readBlock(std::unique_lock<std::mutex>& lock) {
    Slot& slot = slots[(first + filled) % kBlocks];
    reading = true;
    lock.unlock();
    fill(slot);
    lock.lock();
    reading = false;
    ++filled;
    ended = !slot.block;
}

void ReadAhead::Pipeline::fill(Slot& slot) {
    try {
        slot.block = source.fill(slot.buffer);
    } catch (...) {
        slot.block.reset();
        slot.failure = std::current_exception();
    }
}

ReadAhead::ReadAhead(const Volumes& volumes, ByteCounter progress)
    : pipeline(std::make_shared<Pipeline>(volumes, std::move(progress))) {}

ReadAhead::~ReadAhead() {
    pipeline->stop();
}

std::optional<ReadAhead::Block> ReadAhead::next() {
    return pipeline->next();
}

} // namespace dumpsig
