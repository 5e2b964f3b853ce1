// Appends records to a file that any number of processes may write at the same time.
//
//     shared_records FILE RECORD…

#include "commons/shared_file.h"

#include <cstdio>
#include <exception>

int main(int argc, char** argv) {
    if (argc < 3) {
        std::printf("Usage: %s FILE RECORD...\n", argv[0]);
        return 1;
    }
    try {
        // Made if absent; owner and group stay as they are.
        brask::SharedFile file(argv[1], /*owner=*/-1, /*group=*/-1, /*mode=*/0640);
        // One lock for all records keeps them together. Without it, each is whole but others may come
        // between.
        file.lockExclusive();
        for (int i = 2; i < argc; ++i) {
            file.AppendLine(argv[i]);
        }
        return 0;
    } catch (const std::exception& e) {
        std::printf("%s\n", e.what());
        return 1;
    }
}
