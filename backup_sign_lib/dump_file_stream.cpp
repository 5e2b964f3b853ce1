#include "backup_sign_lib/dump_file_stream.h"

#include "backup_sign_lib/sign_errors.h"

#include <algorithm>
#include <filesystem>
#include <iterator>

namespace brask {

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
    constexpr size_t kBlock = 1048576;
    std::vector<unsigned char> buffer(kBlock);
    DumpFileStream stream(files, limit);
    while (!stream.atEnd()) {
        const size_t count = stream.read(buffer.data(), buffer.size());
        if (count == 0) {
            break;
        }
        digest.update(buffer.data(), count);
    }
}

void checkFilesExistance(const std::vector<std::string>& files) {
    for (const std::string& path : files) {
        const auto type = std::filesystem::status(path).type();
        if (type == std::filesystem::file_type::none || type == std::filesystem::file_type::not_found) {
            BRASK_THROW(FileNotFoundError, path);
        }
        if (std::filesystem::status(path).type() != std::filesystem::file_type::regular) {
            BRASK_THROW(IsNotRegularFileError, path);
        }
    }
}

} // namespace brask
