// In the place of libFuzzer, for any compiler: runs a target over the files of a folder, each whole and cut
// off after each of its bytes.

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
        for (std::size_t size = 0; size <= text.size(); ++size) {
            LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(text.data()), size);
        }
    }
    fuzz::require(files > 0, "there are files to replay");
    return 0;
}
