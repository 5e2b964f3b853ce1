#include "product/backup_restore_helper/command.h"

#include <cstdio>
#include <filesystem>

// The key pair lies in the product tree that this program itself is in, as "admin/bin/" below the root:
// neither the environment nor the arguments may choose where the private key goes.
int main(int argc, char** argv) {
    std::error_code error;
    const std::filesystem::path self = std::filesystem::read_symlink("/proc/self/exe", error);
    if (error) {
        std::printf("Can't tell which product tree this is: %s\n", error.message().c_str());
        return 1;
    }
    const std::filesystem::path root = self.parent_path().parent_path().parent_path();
    return backup_restore_helper::runCommand(root.string(), argc, argv);
}
