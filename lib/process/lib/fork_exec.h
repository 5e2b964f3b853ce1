#pragma once

// Starting a program in a forked child, and the child's descriptors. spawn.h has the manual; what it says of
// the forked child counts here.

#include <map>
#include <string>
#include <vector>

#include <sys/types.h>

namespace brask {

/// Starts the child on the given descriptors and returns its process id, without waiting. The caller keeps
/// the descriptors, moves the bytes and waits. Raises SystemError("forkExecvPipes: fork() failed") in the
/// caller; any other exception is raised in the child.
pid_t forkExecvPipes(int stdinFd, int stdoutFd, int stderrFd, const std::string& path,
                     const std::vector<char*>& argv, const std::string& user, bool chdirToHome,
                     const std::map<std::string, std::string>& env);

/// Makes `newFd` a copy of `oldFd`, or of /dev/null opened for reading and writing if that is -1, and closes
/// `oldFd`; does nothing if the two are equal. Returns what dup2 returns, its failure included. With -1,
/// `newFd` must be open: /dev/null may come to lie on a closed one at once, and is then closed again.
/// Raises SystemError("dup2Custom failed") when /dev/null can't be opened.
int dup2Custom(int oldFd, int newFd);

/// Closes every descriptor at or above `lowestFd`; nothing is reported. Meant for a freshly forked child. Not
/// the C library's function of this name: inside the namespace, the plain name means this one.
void closefrom(int lowestFd);

/// Reads a descriptor's name in /proc/self/fd: a non-negative decimal int in its one canonical form, digits
/// alone, no leading zero but in "0" itself, no sign, nothing before or after. Returns -1 for any other text,
/// for null, and for a number above 2147483647. Success leaves errno as it was.
int parseStrictNumber(const char* text);

} // namespace brask
