#include "product/backup_restore_helper/key_pair.h"

#include "product/backup_restore_helper/failure.h"

#include <vector>

namespace backup_restore_helper {

namespace {

constexpr std::string_view blockBegin = "-----BEGIN ";
constexpr std::string_view blockEnd = "-----END ";
constexpr std::string_view dashes = "-----";

std::string_view withoutBlanks(std::string_view line) {
    constexpr std::string_view blanks = " \t\v\f";
    const size_t begin = line.find_first_not_of(blanks);
    return begin == std::string_view::npos ? ""
                                           : line.substr(begin, line.find_last_not_of(blanks) + 1 - begin);
}

/// The lines that are not empty, without the blanks round them.
std::vector<std::string_view> linesOf(std::string_view text) {
    constexpr std::string_view byteOrderMark = "\xef\xbb\xbf";
    if (text.starts_with(byteOrderMark)) {
        text.remove_prefix(byteOrderMark.size());
    }
    std::vector<std::string_view> lines;
    while (!text.empty()) {
        const size_t length = std::min(text.find_first_of("\r\n"), text.size());
        if (const std::string_view line = withoutBlanks(text.substr(0, length)); !line.empty()) {
            lines.push_back(line);
        }
        text.remove_prefix(std::min(length + 1, text.size()));
    }
    return lines;
}

/// The first whole block whose label ends in `kind`, or nothing. A block in which another begins is not whole.
std::string findBlock(const std::vector<std::string_view>& lines, std::string_view kind) {
    std::string block;
    std::string lastLine;
    for (const std::string_view line : lines) {
        if (line.starts_with(blockBegin)) {
            const bool wanted = line.ends_with(std::string(kind).append(dashes));
            block.clear();
            lastLine = wanted ? std::string(blockEnd).append(line.substr(blockBegin.size())) : "";
        }
        if (lastLine.empty()) {
            continue;
        }
        block.append(line).append("\n");
        if (line == lastLine) {
            return block;
        }
    }
    return "";
}

KeyPair parseBlocks(std::string_view text, const std::string& name) {
    const std::vector<std::string_view> lines = linesOf(text);
    KeyPair pair{findBlock(lines, "PRIVATE KEY"), findBlock(lines, "PUBLIC KEY")};
    if (pair.privateKey.empty() || pair.publicKey.empty()) {
        throw Failure(name + " holds no whole " + (pair.privateKey.empty() ? "private" : "public") + " key");
    }
    return pair;
}

std::string withPlainLineFeeds(std::string_view text) {
    std::string plain(text);
    for (size_t end = 0; (end = plain.find("\r\n", end)) != std::string::npos;) {
        plain.erase(end, 1);
    }
    return plain;
}

KeyPair parseHalves(std::string_view text, const std::string& name) {
    constexpr const char* separator = "\n\n";
    const std::string plain =
        text.find(separator) == std::string_view::npos ? withPlainLineFeeds(text) : std::string(text);
    const size_t end = plain.find(separator);
    if (end == std::string::npos || end == 0 || plain.find_first_not_of('\n', end) == std::string::npos) {
        throw Failure(name + " is not two keys with two line feeds between them");
    }
    return {plain.substr(0, end), plain.substr(end + 2)};
}

} // namespace

KeyPair parseKeyPair(std::string_view text, const std::string& name) {
    if (text.empty()) {
        throw Failure(name + " is empty");
    }
    if (text.size() > KeyPair::maxSize) {
        throw Failure(name + " is longer than " + std::to_string(KeyPair::maxSize) + " bytes");
    }
    KeyPair pair =
        text.find(blockBegin) != std::string_view::npos ? parseBlocks(text, name) : parseHalves(text, name);
    if (pair.wireForm().find('\0') != std::string::npos) {
        throw Failure(name + " holds a zero byte");
    }
    return pair;
}

} // namespace backup_restore_helper
