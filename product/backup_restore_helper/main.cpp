#include "product/backup_restore_helper/command.h"

// The root is compiled in: neither the environment nor the arguments may choose where the private key goes.
int main(int argc, char** argv) {
    return backup_restore_helper::runCommand(BRASK_HELPER_PRODUCT_ROOT, argc, argv);
}
