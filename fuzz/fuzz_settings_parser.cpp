// Any text is either parsed or raises ParseError.

#include "commons/panel/settings_parser.h"

#include <cstdint>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    try {
        brask::SettingsParser().parse(std::string(reinterpret_cast<const char*>(data), size));
    } catch (const brask::ParseError&) {
    }
    return 0;
}
