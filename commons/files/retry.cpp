#include "commons/files/retry.h"

#include "commons/panel/backup_settings.h"

#include <algorithm>
#include <chrono>
#include <thread>

namespace brask {

void retry(const std::function<void()>& fn, unsigned attempts, unsigned pauseMs) {
    for (unsigned left = attempts; left > 0; --left) {
        try {
            fn();
            return;
        } catch (...) {
            if (left == 1) {
                throw;
            }
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(pauseMs));
    }
}

void retryFileOperation(const std::function<void()>& fn) {
    retry(fn, static_cast<unsigned>(std::max(BackupSettings::localMaxFieIoAttempts(), 0)),
          static_cast<unsigned>(std::max(BackupSettings::localPauseBetweenAttempts(), 0)));
}

} // namespace brask
