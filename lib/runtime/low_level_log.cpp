#include "lib/runtime/low_level_log.h"

#include <cctype>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>

#include <strings.h>
#include <syslog.h>
#include <unistd.h>

namespace brask {

namespace {

constexpr int kOpenlogOptions = LOG_PID | LOG_CONS | LOG_PERROR;
constexpr size_t kNameSize = 64;
constexpr size_t kSyslogLineSize = 8192;

const char* logTarget = nullptr;
int logLevel = 0;
int logOptions = 0;
int logFacility = 0;
char logIdent[kNameSize];
char traceId[kNameSize];

bool isTarget(const char* name) {
    return logTarget == nullptr || strcasecmp(logTarget, name) == 0;
}

__attribute__((format(printf, 2, 0))) void printLine(FILE* stream, const char* format, va_list args) {
    va_list copy;
    va_copy(copy, args);
    vfprintf(stream, format, copy);
    va_end(copy);
    fputc('\n', stream);
    fflush(stream);
}

__attribute__((format(printf, 2, 0))) void streamWriteV(int priority, const char* format, va_list args) {
    if (priority > logLevel) {
        return;
    }
    if (isTarget("console") || isTarget("stderr")) {
        printLine(stderr, format, args);
    }
    if (isTarget("console")) {
        printLine(stdout, format, args);
    }
}

__attribute__((format(printf, 2, 3))) void streamWrite(int priority, const char* format, ...) {
    va_list args;
    va_start(args, format);
    streamWriteV(priority, format, args);
    va_end(args);
}

__attribute__((format(printf, 2, 0))) void syslogWriteV(int priority, const char* format, va_list args) {
    if ((logOptions & kLogTraceId) == 0 || traceId[0] == '\0') {
        vsyslog(priority, format, args);
        return;
    }
    char line[kSyslogLineSize];
    const int prefix = snprintf(line, sizeof line, "%s: ", traceId);
    vsnprintf(line + prefix, sizeof line - prefix, format, args);
    syslog(priority, "%s", line);
}

__attribute__((format(printf, 2, 3))) void syslogWrite(int priority, const char* format, ...) {
    va_list args;
    va_start(args, format);
    syslogWriteV(priority, format, args);
    va_end(args);
}

void initTraceId() {
    const char* inherited = getenv("BRASK_LOG_TRACE_ID");
    if (inherited != nullptr && inherited[0] != '\0') {
        snprintf(traceId, sizeof traceId, "%s", inherited);
        return;
    }
    const auto letter = static_cast<unsigned char>(program_invocation_short_name[0]);
    snprintf(traceId, sizeof traceId, "%c%ld", toupper(letter), static_cast<long>(getpid()));
    setenv("BRASK_LOG_TRACE_ID", traceId, 1);
}

void initSyslog(int facility, int options, const char* ident) {
    closelog();
    logOptions = options | LOG_PID;
    logFacility = facility;
    snprintf(logIdent, sizeof logIdent, "%s", ident != nullptr ? ident : program_invocation_short_name);
    if ((logOptions & kLogTraceId) != 0) {
        initTraceId();
    }
    openlog(logIdent, logOptions & kOpenlogOptions, logFacility);
}

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

void (*logWrite)(int priority, const char* format, ...) = streamWrite;
void (*logWriteV)(int priority, const char* format, va_list args) = streamWriteV;

void LogInit(const char* target, int level, int facility, int options, const char* ident) {
    logTarget = target;
    if (target == nullptr) {
        initSyslog(facility, options, ident);
        logWrite = syslogWrite;
        logWriteV = syslogWriteV;
    } else {
        logWrite = streamWrite;
        logWriteV = streamWriteV;
    }
    LogSetLevel(level);
}

void LogSetLevel(int level) {
    logLevel = level & 7;
    if ((level & kLogLevelFromEnvironment) != 0) {
        const char* wanted = getenv("BRASK_LOG_LEVEL");
        if (wanted != nullptr && wanted[0] >= '0' && wanted[0] <= '7' && wanted[1] == '\0' &&
            wanted[0] - '0' > logLevel) {
            logLevel = wanted[0] - '0';
        }
    }
    if (logTarget == nullptr) {
        setlogmask((1 << (logLevel + 1)) - 1);
    }
}

int LogGetOptions() {
    return logOptions;
}

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
