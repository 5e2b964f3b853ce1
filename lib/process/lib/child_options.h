#pragma once

// What can be chosen about a child process. spawn.h tells what to know before running one.

#include <cstddef>
#include <map>
#include <string>
#include <vector>

namespace brask {

/// Fills `buffer` with up to `capacity` bytes for the child's standard input. 0: there is no more.
using InputCallback = size_t(char* buffer, size_t capacity, void* context);

/// Takes bytes that the child has written.
using OutputCallback = void(const char* data, size_t length, void* context);

/// A child to run. The parameters of the functions in spawn.h mean the same.
struct ChildOptions {
    std::string path;        ///< searched for in the PATH of the child when it has no slash
    std::vector<char*> argv; ///< ends with a null entry; the strings stay the caller's
    /// The account to run as. Empty, root or unknown: the child runs as the caller.
    std::string user;
    bool chdirToHome = true; ///< begin in the account's home directory; counts only where there is a switch
    /// Variables on top of those that the child inherits, which they win over.
    std::map<std::string, std::string> env;

    InputCallback* input = nullptr;   ///< to be set
    OutputCallback* output = nullptr; ///< null: what it would take is dropped
    OutputCallback* error = nullptr;  ///< null: what it would take is dropped
    void* context = nullptr;          ///< goes to all three
    size_t inputBufferSize = 4096;
    size_t outputBufferSize = 4096;
    size_t errorBufferSize = 4096;
};

} // namespace brask
