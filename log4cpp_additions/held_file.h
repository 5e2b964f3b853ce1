#pragma once

// File appenders on a file that is open already.

#include "log4cpp_additions/open_log.h"

#include <log4cpp/RollingFileAppender.hh>

#include <cstddef>
#include <string>

namespace log4cpp_additions {

/// A descriptor of its own for the file of `openLog`, which is emptied first unless `append`. -1 for none.
int takeFile(const OpenLog& openLog, bool append);

/// log4cpp's rolling appender, but on an open file, and with successors that are made and never found: a link
/// or a file that somebody has put in the way leaves the appender with the file that it has.
class HeldRollingFileAppender final : public log4cpp::RollingFileAppender {
public:
    /// Takes the descriptor over.
    HeldRollingFileAppender(const std::string& name, const std::string& fileName, int descriptor,
                            std::size_t maxFileSize, unsigned int maxBackupIndex);

    void rollOver() override;

private:
    std::string numbered(unsigned int index) const;

    const std::string path;
};

} // namespace log4cpp_additions
