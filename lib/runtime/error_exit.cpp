#include "lib/runtime/error_exit.h"

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace brask {

namespace {

constexpr size_t kInitialSize = 4096;

/// A text on the heap that grows as it is appended to. Its data is null once memory has run out.
struct MessageBuffer {
    char* data;
    size_t capacity;
    size_t length;
};

/// Appends the formatted text, growing the buffer until it fits.
__attribute__((format(printf, 2, 0))) void appendV(MessageBuffer& buffer, const char* format, va_list args) {
    while (buffer.data != nullptr) {
        const size_t room = buffer.capacity - buffer.length;
        va_list copy;
        va_copy(copy, args);
        const int needed = vsnprintf(buffer.data + buffer.length, room, format, copy);
        va_end(copy);
        if (needed < 0) {
            buffer.data[buffer.length] = '\0';
            return;
        }
        if (std::cmp_less(needed, room)) {
            buffer.length += needed;
            return;
        }
        const size_t capacity = buffer.length + needed + 1;
        char* grown = static_cast<char*>(realloc(buffer.data, capacity));
        if (grown == nullptr) {
            free(buffer.data);
        }
        buffer.data = grown;
        buffer.capacity = capacity;
    }
}

__attribute__((format(printf, 2, 3))) void append(MessageBuffer& buffer, const char* format, ...) {
    va_list args;
    va_start(args, format);
    appendV(buffer, format, args);
    va_end(args);
}

void printTo(FILE* stream, const char* text) {
    if (program_invocation_name != nullptr) {
        fprintf(stream, "%s: ", basename(program_invocation_name));
    }
    fputs(text, stream);
    const size_t length = strlen(text);
    if (length == 0 || text[length - 1] != '\n') {
        fputc('\n', stream);
    }
    fflush(stream);
}

} // namespace

void ErrorExit(int exitCode, const char* format, ...) {
    const int systemError = errno;
    MessageBuffer buffer{static_cast<char*>(malloc(kInitialSize)), kInitialSize, 0};

    va_list args;
    va_start(args, format);
    appendV(buffer, format, args);
    va_end(args);
    if (systemError != 0) {
        append(buffer, "\nSystem error %d: %s", systemError, strerror(systemError));
    }

    const char* text = buffer.data != nullptr ? buffer.data : "Can't allocate memory for error message";
    printTo(stderr, text);
    printTo(stdout, text);
    free(buffer.data);
    if (exitCode != 0) {
        exit(exitCode);
    }
}

} // namespace brask
