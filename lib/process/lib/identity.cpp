#include "lib/process/lib/identity.h"

#include "lib/runtime/low_level_log.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <pwd.h>
#include <unistd.h>

namespace brask {

namespace {

constexpr int kLookUpLevel = 3;

char idNameBuffer[4096];

const char* errorTextOr(const char* textWithoutError) {
    return errno != 0 ? strerror(errno) : textWithoutError;
}

struct group* findGroupOfId(const char* digits) {
    const auto gid = static_cast<gid_t>(strtoul(digits, nullptr, 10));
    struct group* found = getgrgid(gid);
    if (found == nullptr) {
        logWrite(kLookUpLevel, "getgrgid(%u): %s", gid, errorTextOr("Group not found"));
    }
    return found;
}

struct group* findGroupOfName(const char* name) {
    struct group* found = getgrnam(name);
    if (found == nullptr) {
        logWrite(kLookUpLevel, "getgrnam(%s): %s", name, errorTextOr("Group not found"));
    }
    return found;
}

} // namespace

void p_setuid_core(const char* user, unsigned flags) {
    uid_t uid = -1;
    gid_t gid = -1;
    char* home = nullptr;
    if (lookupUser(user, &uid, &gid, &home) != 0) {
        ErrorExit(1, "User '%s' not found", user);
        return; // not reached: an exit code other than 0 ends the process, here and below
    }
    if ((flags & kSetuidChangeDirectory) != 0 && chdir(home) != 0) {
        ErrorExit(1, "Cannot chdir to '%s' homedir '%s'", user, home);
    }
    if ((flags & kSetuidChangeRoot) != 0 && chroot(home) != 0) {
        ErrorExit(1, "Cannot chroot to '%s' homedir '%s'", user, home);
    }
    if ((flags & kSetuidAllowRoot) == 0 && uid == 0) {
        ErrorExit(1, "Cannot run as forbidden uid: %d\n", static_cast<int>(uid));
    }
    // The user id goes last: after it, the right to do the others is gone.
    if (initgroups(user, gid) != 0) {
        ErrorExit(1, "Unable to init new groups for user '%s': %s", user, strerror(errno));
    }
    if (setgid(gid) != 0) {
        ErrorExit(1, "Failed to setgid: %d\n", static_cast<int>(gid));
    }
    if (setuid(uid) != 0) {
        ErrorExit(1, "Failed to setuid: %d\n", static_cast<int>(uid));
    }
}

int p_setuid_flags(const char* user, unsigned flags) {
    p_setuid_core(user, flags);
    return 0;
}

int p_setuid(const char* user, int changeDirectory, int allowRoot) {
    p_setuid_core(user, (changeDirectory != 0 ? kSetuidChangeDirectory : 0) |
                            (allowRoot != 0 ? kSetuidAllowRoot : 0));
    return 0;
}

int p_setuid_home(const char* user) {
    return p_setuid(user, 1, 0);
}

int lookupUser(const char* user, uid_t* uid, gid_t* gid, char** home) {
    const passwd* account = getpwnam(user);
    if (account == nullptr) {
        logWrite(kLookUpLevel, "Unable to getpwnam for user %s", user);
        return -1;
    }
    if (uid != nullptr) {
        *uid = account->pw_uid;
    }
    if (gid != nullptr) {
        *gid = account->pw_gid;
    }
    if (home != nullptr) {
        *home = account->pw_dir;
    }
    return 0;
}

unsigned idOfUser(const char* user, int wantGroup) {
    uid_t uid = 0;
    gid_t gid = 0;
    lookupUser(user, &uid, &gid, nullptr);
    return wantGroup != 0 ? gid : uid;
}

uid_t uidOfUser(const char* user) {
    errno = 0;
    const passwd* account = getpwnam(user);
    if (account == nullptr) {
        logWrite(kLookUpLevel, "Unable to find uid for user %s: %s", user, errorTextOr("User not found"));
        return 0;
    }
    return account->pw_uid;
}

struct group* findGroup(const char* nameOrId) {
    if (nameOrId == nullptr || *nameOrId == '\0') {
        return nullptr;
    }
    errno = 0;
    const bool isId =
        std::all_of(nameOrId, nameOrId + strlen(nameOrId), [](unsigned char c) { return isdigit(c) != 0; });
    return isId ? findGroupOfId(nameOrId) : findGroupOfName(nameOrId);
}

gid_t groupId(const char* nameOrId) {
    return groupIdChecked(nameOrId, nullptr);
}

gid_t groupIdChecked(const char* nameOrId, bool* found) {
    const struct group* entry = findGroup(nameOrId);
    if (found != nullptr) {
        *found = entry != nullptr;
    }
    return entry != nullptr ? entry->gr_gid : 0;
}

const char* userNameOfId(uid_t uid) {
    const passwd* account = getpwuid(uid);
    if (account != nullptr) {
        snprintf(idNameBuffer, sizeof idNameBuffer, "%s", account->pw_name);
    } else {
        snprintf(idNameBuffer, sizeof idNameBuffer, "%u", uid);
    }
    return idNameBuffer;
}

} // namespace brask
