// dumpsig verifies signed dumps anywhere, with nothing but the public key.

#include "dumpsig/commands.h"

int main(int argc, char** argv) {
    return dumpsig::run(argc, argv);
}
