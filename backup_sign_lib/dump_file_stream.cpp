#include "backup_sign_lib/dump_file_stream.h"

#include "backup_sign_lib/sign_errors.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <iterator>

namespace brask {

namespace {

/// On a page of its own, because the copy out of the page cache into memory that starts within a cache line,
/// as that of malloc does, costs as much as the hash.
struct alignas(4096) Block {
    std::array<unsigned char, 1048576> bytes;
};

} // namespace

DumpFileStream::DumpFileStream(const std::vector<std::string>& files, size_t limit)
    : files(files), current(files.begin()), limit(limit) {}

size_t DumpFileStream::read(void* buffer, size_t size) {
    char* const bytes = static_cast<char*>(buffer);
    size_t total = 0;
    while (!atEnd()) {
        if (file == nullptr) {
            openVolume();
        }
        const size_t count = std::fread(bytes + total, 1, withinLimit(size - total), file.get());
        total += count;
        if (volumeEndsAfter(count)) {
            closeVolume();
        }
        if (total >= size) {
            break;
        }
    }
    return total;
}

void DumpFileStream::openVolume() {
    file.reset(std::fopen(current->c_str(), "rb"));
    if (file == nullptr) {
        BRASK_THROW(SignError, "Cannot read file " + *current);
    }
    readFromVolume = 0;
    isLastVolume = std::next(current) == files.end();
}

void DumpFileStream::closeVolume() {
    file.reset();
    ++current;
    readFromVolume = 0;
}

size_t DumpFileStream::withinLimit(size_t size) const {
    return limit != 0 && isLastVolume ? std::min(size, limit - readFromVolume) : size;
}

bool DumpFileStream::volumeEndsAfter(size_t count) {
    // Only the end of the file ends a volume; ferror is left out on purpose, so a failed read is tried again.
    if (std::feof(file.get()) != 0) {
        return true;
    }
    readFromVolume += count;
    return isLastVolume && readFromVolume == limit;
}

void countDigest(const std::vector<std::string>& files, Digest& digest, size_t limit) {
    const auto block = std::make_unique_for_overwrite<Block>();
    DumpFileStream stream(files, limit);
    while (!stream.atEnd()) {
        const size_t count = stream.read(block->bytes.data(), block->bytes.size());
        if (count == 0) {
            break;
        }
        digest.update(block->bytes.data(), count);
    }
}

void checkFilesExistance(const std::vector<std::string>& files) {
    for (const std::string& path : files) {
        if (!std::filesystem::exists(path)) {
            BRASK_THROW(FileNotFoundError, path);
        }
        if (!std::filesystem::is_regular_file(path)) {
            BRASK_THROW(IsNotRegularFileError, path);
        }
    }
}

} // namespace brask
