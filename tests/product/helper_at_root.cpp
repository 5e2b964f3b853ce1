#include "product/backup_restore_helper/command.h"

// The helper as it is, except that its first argument names the product root, which the real one has compiled
// in.
int main(int argc, char** argv) {
    return argc < 2 ? 2 : backup_restore_helper::runCommand(argv[1], argc - 1, argv + 1);
}
