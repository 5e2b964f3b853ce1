#include "commons/run/locale_check.h"

#include "commons/log/log_facade.h"

#include <clocale>
#include <cstdlib>
#include <string>

namespace brask {

namespace {

std::string environmentText(const char* name) {
    const char* value = getenv(name);
    return value == nullptr ? "" : value;
}

} // namespace

void checkLocale() {
    const std::string saved = std::setlocale(LC_ALL, nullptr);
    if (std::setlocale(LC_ALL, "") != nullptr) {
        std::setlocale(LC_ALL, saved.c_str());
        return;
    }
    logNote("Locale in the environment variables is invalid (LC_ALL={}, LANG={}), fall back to 'C'.",
            environmentText("LC_ALL"), environmentText("LANG"));
    setenv("LC_ALL", "C", 1);
}

} // namespace brask
