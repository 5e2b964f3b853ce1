#include "lib/process/lib/spawn.h"

#include <cstdlib>
#include <cstring>

namespace brask {

namespace {

constexpr size_t kBufferSize = 4096;

struct StringIoContext {
    const std::string* input;
    size_t inputOffset;
    std::string* output;
    std::string* error;
};

size_t takeInput(char* buffer, size_t capacity, void* context) {
    auto& io = *static_cast<StringIoContext*>(context);
    const size_t length = io.input->copy(buffer, capacity, io.inputOffset);
    io.inputOffset += length;
    return length;
}

void appendOutput(const char* data, size_t length, void* context) {
    static_cast<StringIoContext*>(context)->output->append(data, length);
}

void appendError(const char* data, size_t length, void* context) {
    static_cast<StringIoContext*>(context)->error->append(data, length);
}

/// An argument vector of copies, ended by a null entry.
class ArgumentCopies {
public:
    explicit ArgumentCopies(const std::vector<std::string>& args) {
        argv.reserve(args.size() + 1);
        for (const std::string& arg : args) {
            argv.push_back(strdup(arg.c_str()));
        }
        argv.push_back(nullptr);
    }

    ArgumentCopies(const ArgumentCopies&) = delete;
    ArgumentCopies& operator=(const ArgumentCopies&) = delete;

    ~ArgumentCopies() {
        for (char* arg : argv) {
            free(arg);
        }
    }

    std::vector<char*> argv;
};

} // namespace

int forkExecvGetOutErr(const std::string& input, std::string& output, std::string& error,
                       const std::string& path, const std::vector<char*>& argv, const std::string& user,
                       bool chdirToHome, const std::map<std::string, std::string>& env) {
    StringIoContext context{&input, 0, &output, &error};
    return forkExecvGetOutErr(takeInput, appendOutput, appendError, path, argv, user, chdirToHome, env,
                              &context, kBufferSize, kBufferSize, kBufferSize);
}

int forkExecvGetOutErr(std::string& output, std::string& error, const std::string& path,
                       const std::vector<char*>& argv, const std::string& user, bool chdirToHome,
                       const std::map<std::string, std::string>& env) {
    return forkExecvGetOutErr(std::string(), output, error, path, argv, user, chdirToHome, env);
}

int forkExecvGetOutErr(std::string& output, std::string& error, const std::string& path,
                       const std::vector<char*>& argv, const std::string& user, bool chdirToHome) {
    static const std::map<std::string, std::string> noVariables;
    return forkExecvGetOutErr(output, error, path, argv, user, chdirToHome, noVariables);
}

int forkExecvGetOutErr(std::string& output, std::string& error, const std::string& path,
                       const std::vector<char*>& argv) {
    return forkExecvGetOutErr(output, error, path, argv, std::string(), true);
}

int forkExecvGetOutErr(std::string& output, const std::string& path, const std::vector<char*>& argv) {
    std::string error;
    return forkExecvGetOutErr(output, error, path, argv);
}

int forkExecvGetOutErr(std::string& output, std::string& error, const std::vector<std::string>& args,
                       const std::string& user, bool chdirToHome,
                       const std::map<std::string, std::string>& env) {
    const std::string& path = args.at(0);
    const ArgumentCopies copies(args);
    return forkExecvGetOutErr(std::string(), output, error, path, copies.argv, user, chdirToHome, env);
}

int forkExecvGetOutErr(std::string& output, std::string& error, const std::vector<std::string>& args) {
    const std::map<std::string, std::string> noVariables;
    return forkExecvGetOutErr(output, error, args, std::string(), false, noVariables);
}

} // namespace brask
