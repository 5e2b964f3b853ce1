// The members that replace a file with a document or an element, owned by the panel's administrative account.
// They are declared with their classes and defined here, because they need the files, the settings and the
// accounts, all of which are above the XML classes.
//
// Both write a temporary file beside the target and move it there. Nothing is synced to the disk, and the
// temporary file stays on any failure, as what an operator has left of the content.

#include "commons/files/rename.h"
#include "commons/files/retry.h"
#include "commons/files/temp_file.h"
#include "commons/panel/param_source.h"
#include "commons/xml/xml_document.h"
#include "commons/xml/xml_error_handlers.h"
#include "commons/xml/xml_node.h"
#include "lib/process/lib/identity.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include <unistd.h>

namespace brask {

namespace {

namespace fs = std::filesystem;

/// An empty file beside `path`. A bare file name has no directory, and its file lies in the default one.
std::string makeFileBeside(const fs::path& path, const std::string& prefix) {
    return BMM_getTempFileName(path.parent_path().string(), prefix + path.filename().string(), false);
}

/// Hands `file` over to the panel's account with its primary group. An unknown account reads as root.
void giveToPanel(const std::string& file) {
    const uid_t uid = idOfUser(getParam("BSAADM").c_str(), 0);
    const gid_t gid = idOfUser(getParam("BSAADM").c_str(), 1);
    if (chown(file.c_str(), uid, gid) != 0) {
        BRASK_THROW(CantTakeFileOwnership, file, std::strerror(errno));
    }
}

void writeElement(const XmlNode& element, const std::string& file) {
    FILE* const stream = std::fopen(file.c_str(), "w+");
    if (stream == nullptr) {
        // This process made the file a moment ago: that it cannot open it is a fault of the program. To go on
        // would put an empty file in the target's place.
        std::abort();
    }
    const QuietXmlErrors quiet;
    xmlElemDump(stream, element.doc_, element.node_);
    const bool failed = std::ferror(stream) != 0;
    if (std::fclose(stream) != 0 || failed) {
        BRASK_THROW(tError_SaveFile, file);
    }
}

} // namespace

void tXmlDocument::saveToFileAtomically(const std::string& path) {
    const std::string file = makeFileBeside(path, "xp-stfa-");
    saveToFile(file);
    giveToPanel(file);
    retryFileOperation([&] { brask::rename(file, path); });
}

void XmlNode::saveToFileAtomically(cstring& path) const {
    const std::string file = makeFileBeside(path, "xw-stfa-");
    writeElement(*this, file);
    giveToPanel(file);
    try {
        // Unlike the document's, this save takes the target away first: for a moment there is none.
        if (fs::exists(path)) {
            fs::remove(path);
        }
        brask::rename(file, path);
    } catch (const fs::filesystem_error& e) {
        BRASK_THROW(CantRenameFile, file, path, e.what());
    }
}

} // namespace brask
