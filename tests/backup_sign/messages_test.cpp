#include "backup_sign/command_line.h"
#include "backup_sign_lib/sign_errors.h"
#include "commons/crypto/openssl.h"
#include "commons/files/file_utils.h"
#include "commons/files/temp_file.h"
#include "commons/run/session_files.h"
#include "commons/xml_parse.h"
#include "commons/xml_wrap.h"
#include "lib/process/lib/ExecCmd.h"
#include "tests/support/support.h"

#include <boost/algorithm/string/replace.hpp>

namespace {

using namespace test_support;

template <class... Tags>
std::string textsOf(Tags... tags) {
    std::string texts;
    for (ErrorTag* tag : {tags...}) {
        texts += std::string(tag(true)) + ": " +
                 boost::replace_all_copy<std::string>(tag(false), "\n", "\\n") + "\n";
    }
    return texts;
}

TEST(Messages, AreThoseThatCallersKnow) {
    EXPECT_EQ(textsOf(&MissingOptionError, &SignError, &VerifyError, &WrongSignatureDataError,
                      &DigestCalculationError, &FileNotFoundError, &IsNotRegularFileError,
                      &RsaKeyGenerationError, &GenerationError, &CertificateNotFoundError,
                      &SetBackupCertificateError, &OpenSslError, &AssertionFailed, &ParamError,
                      &CantRenameFile, &NoParentNode, &NoSuchAttribute, &tError_XmlInternal,
                      &NotEnoughSpaceAt, &CantCreateDirectory, &CantStatFS, &CantCreateTempFile,
                      &CantCreateTempDir, &UnableToCreateSession, &tError_ParseFile, &tError_WrongInputFile,
                      &tError_SaveFile, &CantTakeFileOwnership, &tError_WrongContent, &tError_EmptyDoc,
                      &tError_WrongDoc, &InvalidDtdFile, &ExternalDtdValidationFailed,
                      &InternalDtdValidationFailed, &tError_XPath_CantEvaluate, &tError_XPath_TypesMismatch,
                      &ExecCmd::Failed),
              readFile(SOURCE_FOLDER "/tests/data/messages.txt"));
}

} // namespace
