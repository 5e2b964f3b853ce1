#pragma once

// The syntax of the panel's settings files, and typed reads of what was parsed.
//
//     ; a comment
//     [section]
//     key = value            ; stored as "section.key"
//     key[sub] = "a; b"      ; stored as "section.key.sub"
//
// Bytes have no assumed encoding; a UTF-8 byte order mark is skipped. Blanks are tab, carriage return and
// space. `#` begins no comment, and a quoted text knows no escapes. A key before any header is stored with a
// leading dot. A later value of the same key replaces the earlier one.

#include <cstddef>
#include <istream>
#include <map>
#include <stdexcept>
#include <string>

namespace brask {

/// The text breaks the syntax. what() reads like
/// "Parse error: Expected ']', found '<EOL>': Line 3, column 7". A NUL that was found there ends what().
class ParseError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
    ~ParseError() override = default;
};

/// Values by their full, dotted key.
using SettingsMap = std::map<std::string, std::string>;

/// A recursive-descent parser: one member function for each rule of the syntax, one character of look-ahead,
/// a single pass.
class SettingsParser {
public:
    /// Parses `source` to its end and returns all values read so far: those of earlier inputs of this parser
    /// too. Raises ParseError at the first error, and std::system_error when the stream fails. A stream
    /// without a byte order mark must be seekable: it is read from its start.
    SettingsMap parse(std::istream& source);

    SettingsMap parse(const std::string& text);

private:
    void skipByteOrderMark();
    void reset();

    void advance();
    void expect(char wanted);
    void skipBlanks();
    void dropLine();

    void readFile();
    void readStatement();
    void readSectionHeader();
    void readAssignment();
    std::string readKey();
    std::string readSubscript();
    std::string readName();
    std::string readValue();
    std::string readQuoted(char quote);
    std::string readBare(const char* stops);

    std::istream* input = nullptr;
    int current = -1; // the character looked at, -1 at the end of the input
    std::size_t line = 1;
    std::size_t column = 1;
    std::string section;
    SettingsMap values;
};

/// "key=value" lines joined by line feeds, with none after the last.
std::string settingsToString(const SettingsMap& values);

/// Converts the text of a setting; defined for the types below and for no other. Numbers are read as the
/// std::stoi family does in base 10: leading blanks and a sign are accepted, what follows the number is
/// ignored, and text that is no number raises std::invalid_argument or std::out_of_range.
template <class T>
T convertSetting(const std::string& text) = delete;
template <>
int convertSetting<int>(const std::string& text);
template <>
long convertSetting<long>(const std::string& text);
template <>
unsigned long convertSetting<unsigned long>(const std::string& text);
template <>
long long convertSetting<long long>(const std::string& text);
template <>
unsigned long long convertSetting<unsigned long long>(const std::string& text);
template <>
unsigned int convertSetting<unsigned int>(const std::string& text);
/// Never fails: "false", "off", "no", "0" and the empty text are false in any case of letters, all else true.
template <>
bool convertSetting<bool>(const std::string& text);
template <>
std::string convertSetting<std::string>(const std::string& text);

/// The value of `section`.`key`, or `defaultValue` when the key is absent.
template <class T>
T getSetting(const SettingsMap& values, const std::string& section, const std::string& key,
             const T& defaultValue) {
    const auto found = values.find(section + "." + key);
    return found == values.end() ? defaultValue : convertSetting<T>(found->second);
}

} // namespace brask
