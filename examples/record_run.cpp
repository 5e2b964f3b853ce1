// Records a small run as an "execution-result" document, the way a restore utility does: objects with
// messages, the result of another utility merged in, an overall status.
//
//     record_run SESSION-DIRECTORY [RESULT-FILE]
//
// The document is written to "migration.result" in the session directory, and printed.

#include "commons/exceptions.h"
#include "commons/log_facade.h"
#include "commons/param_source.h"
#include "commons/session.h"
#include "commons/xml_log.h"
#include "commons/xml_parse.h"

#include <cstdio>
#include <exception>

namespace {

// A program on the library says once, before main, where the library's parameters come from.
brask::ParamFromBSAStrategy parameters;
[[maybe_unused]] const bool parametersInstalled = (brask::paramSource = &parameters, true);

BRASK_ERROR_TAG(DatabaseIsTooOld, "The database server {} cannot take a dump of version {}")

void recordRun(brask::Log& log) {
    log.RaiseStatus(10); // nothing has failed so far: "success"

    log.AddObject("example.com", "domain");
    // A failure is logged through the front end, at level 1: a warning in the document.
    try {
        BRASK_THROW(DatabaseIsTooOld, "10.3", "11.4");
    } catch (const brask::IExTraceable& e) {
        brask::GetLogFacade()->Write(brask::level::kWarning, false, e, nullptr);
    }
    log.AddObject("untouched.example.com", "subdomain");
    log.RemoveEmptyObject(); // collected nothing and leaves no trace
    log.RemoveEmptyObject();

    // A message for an object that is not the current one names its path from the root.
    const brask::ObjectList path{{"example.com", "domain"}, {"info@example.com", "mailname"}};
    brask::GetLogFacade()->Write(brask::level::kInfo, false, "The mailbox was restored", &path);
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::printf("Usage: %s SESSION-DIRECTORY [RESULT-FILE]\n", argv[0]);
        return 1;
    }
    try {
        const brask::SessionLifetimeController session(argv[1]);
        brask::CreateXmlLog("");
        recordRun(*brask::currentLog);
        if (argc > 2) {
            brask::AddResultFile(argv[2]);
        }
        brask::DestroyXmlLog(); // here the document reaches the disk
        brask::tXmlDocument(brask::session->getResultFile().c_str()).saveToStdout();
        return 0;
    } catch (const std::exception& e) {
        std::printf("%s\n", e.what());
        return 1;
    }
}
