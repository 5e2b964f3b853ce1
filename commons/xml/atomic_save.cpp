#include "commons/xml/atomic_save.h"

#include "commons/errors/shared_tags.h"
#include "commons/files/temp_file.h"
#include "commons/panel/param_source.h"
#include "lib/process/lib/identity.h"

#include <cerrno>
#include <cstring>

#include <unistd.h>

namespace brask {

std::string makeFileBeside(const std::filesystem::path& target, const std::string& prefix) {
    return BMM_getTempFileName(target.parent_path().string(), prefix + target.filename().string(), false);
}

void giveToPanel(const std::string& file) {
    const uid_t uid = idOfUser(getParam("BSAADM").c_str(), 0);
    const gid_t gid = idOfUser(getParam("BSAADM").c_str(), 1);
    if (chown(file.c_str(), uid, gid) != 0) {
        BRASK_THROW(CantTakeFileOwnership, file, std::strerror(errno));
    }
}

} // namespace brask
