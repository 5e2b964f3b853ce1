#include "commons/panel/settings_parser.h"

#include "commons/errors/format.h"
#include "commons/errors/system_error.h"

#include <boost/algorithm/string/case_conv.hpp>
#include <boost/algorithm/string/join.hpp>
#include <boost/algorithm/string/trim.hpp>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <limits>
#include <locale>
#include <sstream>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

namespace brask {

namespace {

constexpr int kEnd = -1;
constexpr const char* kBlanks = "\t\r ";

bool isOneOf(int character, const char* set) {
    // A terminating NUL belongs to no set: the input may hold NULs.
    return character > 0 && std::strchr(set, character) != nullptr;
}

std::string displayForm(int character) {
    switch (character) {
    case kEnd:
        return "<EOF>";
    case '\n':
        return "<EOL>";
    default:
        return {static_cast<char>(character)};
    }
}

bool failedBeforeEnd(const std::istream& stream) {
    return stream.fail() && !stream.eof();
}

} // namespace

SettingsMap SettingsParser::parse(std::istream& source) {
    input = &source;
    try {
        skipByteOrderMark();
        advance();
        readFile();
    } catch (...) {
        reset();
        throw;
    }
    reset();
    return values;
}

SettingsMap SettingsParser::parse(const std::string& text) {
    std::istringstream source(text);
    return parse(source);
}

void SettingsParser::skipByteOrderMark() {
    constexpr std::array<char, 3> mark{'\xEF', '\xBB', '\xBF'};
    std::array<char, 3> start{};
    input->read(start.data(), start.size());
    if (failedBeforeEnd(*input)) {
        throwErrno("Unable to read characters");
    }
    if (input->gcount() == static_cast<std::streamsize>(mark.size()) && start == mark) {
        return;
    }
    input->clear();
    if (!input->seekg(0)) {
        throwErrno("Unable to return input position back");
    }
}

void SettingsParser::reset() {
    input = nullptr;
    current = kEnd;
    line = 1;
    column = 1;
    section.clear();
}

void SettingsParser::advance() {
    const int previous = current;
    current = input->get();
    if (failedBeforeEnd(*input)) {
        throwErrno("Unable to read next character");
    }
    if (previous == '\n') {
        ++line;
        column = 1;
    } else if (previous != kEnd) {
        ++column;
    }
}

void SettingsParser::expect(char wanted) {
    if (current == wanted) {
        advance();
        return;
    }
    std::ostringstream message;
    message << "Parse error: Expected '" << displayForm(wanted) << "', found '" << displayForm(current)
            << "': Line " << line << ", column " << column;
    throw ParseError(message.str());
}

void SettingsParser::skipBlanks() {
    while (isOneOf(current, kBlanks)) {
        advance();
    }
}

void SettingsParser::dropLine() {
    while (current != '\n' && current != kEnd) {
        advance();
    }
    if (current == '\n') {
        advance();
    }
}

void SettingsParser::readFile() {
    while (current != kEnd) {
        skipBlanks();
        if (current != kEnd) {
            readStatement();
        }
    }
}

void SettingsParser::readStatement() {
    switch (current) {
    case ';':
        dropLine();
        break;
    case '[':
        readSectionHeader();
        break;
    case '\n':
        advance();
        break;
    default:
        readAssignment();
    }
}

void SettingsParser::readSectionHeader() {
    expect('[');
    skipBlanks();
    section = readName();
    skipBlanks();
    expect(']');
    dropLine();
}

void SettingsParser::readAssignment() {
    const std::string key = readKey();
    skipBlanks();
    // A key on its own is no error and stores nothing.
    if (current == '=') {
        advance();
        skipBlanks();
        std::string value = readValue();
        values[section + "." + key] = std::move(value);
    }
    // What is left is blanks, a comment, or text after a quoted value: none of it has a meaning.
    dropLine();
}

std::string SettingsParser::readKey() {
    std::string key = readBare("=[\n");
    if (current == '[') {
        key += "." + readSubscript();
    }
    return key;
}

std::string SettingsParser::readSubscript() {
    expect('[');
    skipBlanks();
    std::string name = readName();
    skipBlanks();
    expect(']');
    return name;
}

std::string SettingsParser::readName() {
    return current == '"' || current == '\'' ? readQuoted(static_cast<char>(current)) : readBare("]\n");
}

std::string SettingsParser::readValue() {
    return current == '"' || current == '\'' ? readQuoted(static_cast<char>(current)) : readBare(";\n");
}

std::string SettingsParser::readQuoted(char quote) {
    const std::array<char, 3> stops{quote, '\n', '\0'};
    expect(quote);
    std::string text;
    while (current != kEnd && !isOneOf(current, stops.data())) {
        text += static_cast<char>(current);
        advance();
    }
    expect(quote);
    return text;
}

std::string SettingsParser::readBare(const char* stops) {
    std::string text;
    while (current != kEnd && !isOneOf(current, stops)) {
        text += static_cast<char>(current);
        advance();
    }
    return boost::algorithm::trim_copy_if(text, [](char c) { return isOneOf(c, kBlanks); });
}

std::string settingsToString(const SettingsMap& values) {
    std::vector<std::string> lines;
    lines.reserve(values.size());
    for (const auto& [key, value] : values) {
        lines.push_back(fmtlib::format("{}={}", key, value));
    }
    return boost::algorithm::join(lines, "\n");
}

template <>
int convertSetting<int>(const std::string& text) {
    return std::stoi(text);
}

template <>
long convertSetting<long>(const std::string& text) {
    return std::stol(text);
}

template <>
unsigned long convertSetting<unsigned long>(const std::string& text) {
    return std::stoul(text);
}

template <>
long long convertSetting<long long>(const std::string& text) {
    return std::stoll(text);
}

template <>
unsigned long long convertSetting<unsigned long long>(const std::string& text) {
    return std::stoull(text);
}

template <>
unsigned int convertSetting<unsigned int>(const std::string& text) {
    const unsigned long value = std::stoul(text);
    if (value > std::numeric_limits<unsigned int>::max()) {
        throw std::out_of_range("'" + text + "' is out of range of 'unsigned int' type");
    }
    return static_cast<unsigned int>(value);
}

template <>
bool convertSetting<bool>(const std::string& text) {
    constexpr std::array<std::string_view, 5> kFalse{"", "0", "no", "off", "false"};
    const std::string word = boost::algorithm::to_lower_copy(text, std::locale::classic());
    return std::find(kFalse.begin(), kFalse.end(), word) == kFalse.end();
}

template <>
std::string convertSetting<std::string>(const std::string& text) {
    return text;
}

} // namespace brask
