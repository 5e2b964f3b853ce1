#include "commons/errors/severity.h"

#include <array>

namespace brask {

namespace {

struct Row {
    int severity;
    const char* word;
};

constexpr std::array<Row, 3> kWords{
    {{severity::kInfo, "info"}, {severity::kWarning, "warning"}, {severity::kError, "error"}}};

} // namespace

const char* severityWord(int severity) {
    for (const Row& row : kWords) {
        if (row.severity == severity) {
            return row.word;
        }
    }
    return kWords.back().word;
}

int severityOfWord(std::string_view word, int otherwise) {
    for (const Row& row : kWords) {
        if (row.word == word) {
            return row.severity;
        }
    }
    return otherwise;
}

} // namespace brask
