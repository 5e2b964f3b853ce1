// In the place of libFuzzer, for any compiler: runs a target over the files of a folder.

#include "fuzz/fuzz.h"

#include <filesystem>
#include <fstream>
#include <iterator>

int main(int argc, char** argv) {
    std::size_t files = 0;
    for (const auto& file : std::filesystem::directory_iterator(argc > 1 ? argv[1] : ".")) {
        std::ifstream stream(file.path(), std::ios::binary);
        const std::string text(std::istreambuf_iterator<char>(stream), {});
        std::fprintf(stderr, "%s\n", file.path().c_str());
        ++files;
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
    }
    fuzz::require(files > 0, "there are files to replay");
    return 0;
}
