#pragma once

// The tuning values that all backup components share. An administrator overrides their defaults in the
// section [bmm] of admin/conf/panel.ini below the product root; the key is the name of the value.

#include <istream>
#include <string>

namespace brask {

/// Type, name and default of every value, in the order in which they are read. No value is checked against a
/// bound: units and limits belong to the consumers.
#define BRASK_BACKUP_SETTINGS(VALUE)                                                                         \
    VALUE(int, ftpMaxResumeAttempts, 3)                                                                      \
    VALUE(int, ftpMaxResumeFailures, 5)                                                                      \
    VALUE(int, ftpPauseBetweenAttempts, 3)                                                                   \
    VALUE(long, ftpFileTransferTimeout, 86400)                                                               \
    VALUE(long, ftpRequestTimeout, 300)                                                                      \
    VALUE(bool, ftpUsePassiveModeOnFailure, true)                                                            \
    VALUE(long, ftpResponseTimeout, 60)                                                                      \
    VALUE(long, ftpConnectionTimeout, 30)                                                                    \
    VALUE(long, ftpKeepAlive, 1)                                                                             \
    VALUE(long, ftpKeepAliveIdle, 60)                                                                        \
    VALUE(long, ftpKeepAliveInterval, 60)                                                                    \
    VALUE(bool, ftpForbidReuseConnection, false)                                                             \
    VALUE(bool, ftpForbidFtpaccessFileCreation, false)                                                       \
    VALUE(int, ftpMaxTlsVersion, 0)                                                                          \
    VALUE(int, ftpShortOpsMaxResumeAttempts, 3)                                                              \
    VALUE(int, ftpShortOpsPauseBetweenAttempts, 1)                                                           \
    VALUE(bool, ftpAllowPassiveIpChange, false)                                                              \
    VALUE(unsigned long, streamCacheSize, 5)                                                                 \
    VALUE(unsigned long, archiveMetaReadBlockSize, 10)                                                       \
    VALUE(int, localMaxFieIoAttempts, 3)                                                                     \
    VALUE(int, localPauseBetweenAttempts, 500)                                                               \
    VALUE(unsigned long, ioBufferSize, 1048576)                                                              \
    VALUE(unsigned int, archiverMaxThreads, 16)                                                              \
    VALUE(bool, restoreModificationTime, true)                                                               \
    VALUE(bool, createFullAfterInvalidBackup, true)

class BackupSettings {
public:
    /// The settings of this process, read from panel.ini at the first call; later changes of the file are not
    /// seen. Raises Error<&ParamError, ExDefault> when the product root is unknown.
    static const BackupSettings& instance();

    /// The defaults, overridden by what the file at `path` says; the defaults alone if there is no file.
    /// A file that can't be read or parsed, or a bad number in it, is logged and is no failure: the
    /// values before the bad one keep what the file gave them, it and those after it their defaults.
    explicit BackupSettings(const std::string& path);

    /// One read-only accessor for each value, named after it: that of instance().
#define BRASK_SETTING_ACCESSOR(type, name, defaultValue)                                                     \
    static type name() {                                                                                     \
        return instance().values.name;                                                                       \
    }
    BRASK_BACKUP_SETTINGS(BRASK_SETTING_ACCESSOR)
#undef BRASK_SETTING_ACCESSOR

    /// The record itself, for a caller that has an instance of its own.
    struct Values {
#define BRASK_SETTING_FIELD(type, name, defaultValue) type name = defaultValue;
        BRASK_BACKUP_SETTINGS(BRASK_SETTING_FIELD)
#undef BRASK_SETTING_FIELD
    };

    const Values& all() const {
        return values;
    }

private:
    void read(std::istream& file);

    Values values;
};

} // namespace brask
