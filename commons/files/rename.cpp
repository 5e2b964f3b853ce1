#include "commons/files/rename.h"

#include <system_error>

namespace brask {

namespace fs = std::filesystem;

namespace {

void copyAndRemove(const fs::path& from, const fs::path& to) {
    if (fs::is_directory(from)) {
        copyDirectory(from, to, true);
    } else {
        fs::copy(from, to);
    }
    fs::remove_all(from);
}

void copyLink(const fs::path& link, const fs::path& target, bool overwrite) {
    // Asked without following: a dangling link at the target is in the way as well.
    if (overwrite && fs::exists(fs::symlink_status(target))) {
        fs::remove(target);
    }
    fs::copy_symlink(link, target);
}

/// Copies one entry, a directory without what is in it.
void copyEntry(const fs::directory_entry& entry, const fs::path& target, bool overwrite) {
    if (entry.is_symlink()) {
        copyLink(entry, target, overwrite);
    } else if (entry.is_directory()) {
        if (!fs::exists(target)) {
            fs::create_directory(target, entry);
        }
    } else if (entry.is_regular_file()) {
        fs::copy_file(entry, target,
                      overwrite ? fs::copy_options::overwrite_existing : fs::copy_options::none);
    }
}

void ensureDirectory(const fs::path& directory, const fs::path& model) {
    if (!fs::exists(directory)) {
        fs::create_directory(directory, model);
    }
}

} // namespace

void rename(const fs::path& from, const fs::path& to) {
    try {
        try {
            fs::rename(from, to);
        } catch (const fs::filesystem_error& e) {
            if (e.code() != std::errc::cross_device_link) {
                throw;
            }
            copyAndRemove(from, to);
        }
    } catch (const std::exception& e) {
        BRASK_THROW(CantRenameFile, from.string(), to.string(), e.what());
    }
}

void copyDirectory(const fs::path& from, const fs::path& to, bool overwrite) {
    ensureDirectory(to, from);
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(from)) {
        copyEntry(entry, to / entry.path().lexically_relative(from), overwrite);
    }
}

void copyDirectoryRecursively(const fs::path& from, const fs::path& to, bool overwrite) {
    ensureDirectory(to, from);
    for (const fs::directory_entry& entry : fs::directory_iterator(from)) {
        const fs::path target = to / entry.path().filename();
        if (entry.is_directory() && !entry.is_symlink()) {
            copyDirectoryRecursively(entry, target, overwrite);
        } else {
            copyEntry(entry, target, overwrite);
        }
    }
}

} // namespace brask
