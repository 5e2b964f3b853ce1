#pragma once

// Users and groups: changing the process's identity, and turning names into ids and back. Failures come back
// as no exceptions: the switch ends the process through ErrorExit with exit code 1, and the look-ups log at
// level 3 and give a neutral value.
//
// All of it rests on getpwnam and its like, which keep their results in static memory, so it is for one
// thread at a time; a pointer that a look-up returned is good until the next look-up.

#include <grp.h>
#include <sys/types.h>

namespace brask {

/// The bits of `flags` below.
inline constexpr unsigned kSetuidChangeDirectory = 1; ///< first of all change to the account's home directory
inline constexpr unsigned kSetuidAllowRoot = 2;       ///< permit a switch to user id 0
inline constexpr unsigned kSetuidChangeRoot = 4;      ///< chroot to the home directory

/// Makes this process run as `user`: supplementary groups, group, then user. It can't be undone. Returns only
/// when all has succeeded; an unknown user, an unreachable home directory that is asked for, root without
/// permission, and a refused change each end the process. Meant for a freshly forked child.
void p_setuid_core(const char* user, unsigned flags);

/// p_setuid_core in forms that return 0. They have no failure result: their failures end the process.
int p_setuid_flags(const char* user, unsigned flags);
int p_setuid(const char* user, int changeDirectory, int allowRoot);
int p_setuid_home(const char* user); ///< p_setuid(user, 1, 0)

/// Stores the account's user id, group id and home directory where the pointers are not null. Returns 0, or
/// -1 for an unknown user, with nothing stored.
int lookupUser(const char* user, uid_t* uid, gid_t* gid, char** home);

/// The user's id or, if `wantGroup` is not zero, the id of the user's primary group. 0 for an unknown user,
/// which is root's id to whoever looks at the number alone.
unsigned idOfUser(const char* user, int wantGroup);

/// The user's id, or 0 for an unknown user.
uid_t uidOfUser(const char* user);

/// The group of a name, or of an id: a text all of digits is taken for an id. Null for an unknown group and,
/// without a log line, for a null or empty text.
struct group* findGroup(const char* nameOrId);

/// The id of findGroup's group, or 0.
gid_t groupId(const char* nameOrId);

/// The same, and stores whether the group was found if `found` is not null.
gid_t groupIdChecked(const char* nameOrId, bool* found);

/// The user's name, cut to 4095 bytes, or the number as text. The next call overwrites the result.
const char* userNameOfId(uid_t uid);

} // namespace brask
