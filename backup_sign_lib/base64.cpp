#include "backup_sign_lib/base64.h"

#include "backup_sign_lib/byte_buffer.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace brask {

namespace {

constexpr std::string_view kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

/// Marks, in the decoding table, a character that is no part of the text.
constexpr unsigned char kInvalid = 0x80;

std::array<unsigned char, 256> table;

void buildEncodingTable() {
    std::copy(kAlphabet.begin(), kAlphabet.end(), table.begin());
}

void buildDecodingTable() {
    table.fill(kInvalid);
    unsigned char value = 0;
    for (const char character : kAlphabet) {
        table[static_cast<unsigned char>(character)] = value++;
    }
    table['='] = 0;
}

unsigned char decoded(char character) {
    return table[static_cast<unsigned char>(character)];
}

constexpr int kLineWithItsEnd = 72;

/// Stores a character of the text, and the line feed that is due after it. The lines have 71 characters, not
/// the customary 64 or 76: the signature documents that exist are written so.
void pushWrapped(ByteBuffer& text, unsigned char character) {
    byteBufferPush(text, static_cast<char>(character));
    if ((text.count + 1) % kLineWithItsEnd == 0) {
        byteBufferPush(text, '\n');
    }
}

using Group = std::array<char, 4>;

/// Moves `text` past the next four valid characters. False when there are fewer.
bool takeGroup(const char*& text, const char* end, Group& group) {
    for (char& character : group) {
        text = std::find_if(text, end, [](char c) { return (decoded(c) & kInvalid) == 0; });
        if (text == end) {
            return false;
        }
        character = *text++;
    }
    return true;
}

/// Stores the bytes of a group, and says how many: fewer than three when the group is padded.
int pushGroup(ByteBuffer& bytes, const Group& group) {
    const unsigned a = decoded(group[0]);
    const unsigned b = decoded(group[1]);
    const unsigned c = decoded(group[2]);
    const unsigned d = decoded(group[3]);
    const std::array<unsigned, 3> values{a << 2U | b >> 4U, b << 4U | c >> 2U, c << 6U | d};
    const int kept = group[2] == '=' ? 1 : group[3] == '=' ? 2 : 3;
    for (int i = 0; i < kept; ++i) {
        byteBufferPush(bytes, static_cast<char>(values[i]));
    }
    return kept;
}

} // namespace

char* base64Encode(const unsigned char* data, int length) {
    buildEncodingTable();
    ByteBuffer text;
    byteBufferInit(text);
    for (int i = 0; i < length; i += 3) {
        const int rest = length - i;
        const unsigned a = data[i];
        const unsigned b = rest > 1 ? data[i + 1] : 0;
        const unsigned c = rest > 2 ? data[i + 2] : 0;
        pushWrapped(text, table[a >> 2U]);
        pushWrapped(text, table[(a & 0x03U) << 4U | b >> 4U]);
        pushWrapped(text, rest > 1 ? table[(b & 0x0FU) << 2U | c >> 6U] : '=');
        pushWrapped(text, rest > 2 ? table[c & 0x3FU] : '=');
    }
    byteBufferPush(text, '\0');
    return text.data;
}

unsigned char* base64Decode(const char* text, int length, int* resultLength) {
    buildDecodingTable();
    ByteBuffer bytes;
    byteBufferInit(bytes);
    const char* const end = text + length;
    Group group;
    while (takeGroup(text, end, group) && pushGroup(bytes, group) == 3) {
    }
    *resultLength = bytes.count;
    byteBufferPush(bytes, '\0');
    return reinterpret_cast<unsigned char*>(bytes.data);
}

} // namespace brask
