#include "product/backup_restore_helper/command.h"
#include "product/backup_restore_helper/failure.h"

#include <cstdio>
#include <exception>
#include <filesystem>
#include <string>

namespace {

// The key pair lies in the product tree that this program itself is in, as "admin/bin/" below the root:
// neither the environment nor the arguments may choose where the private key goes.
std::string productRoot() {
    std::error_code error;
    const std::filesystem::path self = std::filesystem::read_symlink("/proc/self/exe", error);
    if (error) {
        throw backup_restore_helper::Failure("Can't tell which product tree this is: " + error.message());
    }
    return self.parent_path().parent_path().parent_path();
}

} // namespace

int main(int argc, char** argv) {
    try {
        return backup_restore_helper::runCommand(productRoot(), argc, argv);
    } catch (const std::exception& failure) {
        std::puts(failure.what());
        return 1;
    }
}
