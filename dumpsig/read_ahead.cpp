#include "dumpsig/read_ahead.h"

#include "dumpsig/errors.h"

#include <exception>
#include <semaphore>
#include <thread>

namespace dumpsig {

namespace {

/// Two of them stay in a core's second-level cache, where the copy puts the bytes and the hash finds them.
constexpr std::size_t kBlockSize = 256 * 1024;
constexpr std::size_t kBlocks = 2;

/// What is read into. On a page of its own, because the copy out of the page cache into memory that starts
/// within a cache line costs as much as the hash.
struct alignas(4096) Buffer {
    std::array<char, kBlockSize> bytes;
};

/// The volumes in their order, block by block.
class Source {
public:
    Source(Volumes volumes, std::shared_ptr<std::atomic<std::uint64_t>> progress)
        : volumes(std::move(volumes)), progress(std::move(progress)) {}

    /// Fills `buffer` from one volume. Nothing at the end of the last.
    std::optional<ReadAhead::Block> fill(Buffer& buffer);

private:
    std::size_t fillFrom(InputFile& volume, Buffer& buffer);
    void closeVolume();

    const Volumes volumes;
    const std::shared_ptr<std::atomic<std::uint64_t>> progress;
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
        BRASK_THROW(FileError, file->name(), "shrank while it was read");
    }
    file.reset();
    readFromVolume = 0;
    ++current;
}

} // namespace

/// What the caller and the thread share. It lives as long as either of them.
class ReadAhead::Pipeline : public std::enable_shared_from_this<Pipeline> {
public:
    Pipeline(const Volumes& volumes, std::shared_ptr<std::atomic<std::uint64_t>> progress)
        : source(volumes, std::move(progress)) {}

    std::optional<Block> next();

    void stop() {
        stopped = true;
        empty.release();
    }

private:
    struct Slot {
        Buffer buffer;
        std::optional<Block> block;
        std::exception_ptr failure;
    };

    std::optional<Block> readHere();
    std::optional<Block> takeFromThread();
    void startThread();
    void run();
    bool fill(Slot& slot);

    Source source;
    std::array<Slot, kBlocks> slots;
    std::size_t taken = 0;
    bool threadRuns = false;
    std::atomic<bool> stopped = false;
    /// Begins without the one slot that was filled here.
    std::counting_semaphore<kBlocks + 1> empty{kBlocks - 1};
    std::counting_semaphore<kBlocks + 1> filled{0};
};

std::optional<ReadAhead::Block> ReadAhead::Pipeline::next() {
    return threadRuns ? takeFromThread() : readHere();
}

/// A dump of one block, or of small volumes, is read faster than a thread starts.
std::optional<ReadAhead::Block> ReadAhead::Pipeline::readHere() {
    const std::optional<Block> block = source.fill(slots[0].buffer);
    if (block && block->bytes.size() == kBlockSize) {
        startThread();
    }
    return block;
}

void ReadAhead::Pipeline::startThread() {
    threadRuns = true;
    std::thread([self = shared_from_this()] { self->run(); }).detach();
}

void ReadAhead::Pipeline::run() {
    for (std::size_t place = 1;; ++place) {
        empty.acquire();
        if (stopped) {
            return;
        }
        const bool goesOn = fill(slots[place % kBlocks]);
        filled.release();
        if (!goesOn) {
            return;
        }
    }
}

bool ReadAhead::Pipeline::fill(Slot& slot) {
    try {
        slot.block = source.fill(slot.buffer);
        return slot.block.has_value();
    } catch (...) {
        slot.failure = std::current_exception();
        return false;
    }
}

std::optional<ReadAhead::Block> ReadAhead::Pipeline::takeFromThread() {
    // The caller is done with the block that it has.
    empty.release();
    filled.acquire();
    const Slot& slot = slots[++taken % kBlocks];
    if (slot.failure) {
        std::rethrow_exception(slot.failure);
    }
    return slot.block;
}

ReadAhead::ReadAhead(const Volumes& volumes, std::shared_ptr<std::atomic<std::uint64_t>> progress)
    : pipeline(std::make_shared<Pipeline>(volumes, std::move(progress))) {}

ReadAhead::~ReadAhead() {
    pipeline->stop();
}

std::optional<ReadAhead::Block> ReadAhead::next() {
    return pipeline->next();
}

} // namespace dumpsig
