#include "backup_sign_lib/backup_sign.h"

#include "backup_sign_lib/dump_signature.h"
#include "backup_sign_lib/legacy_xml.h"
#include "backup_sign_lib/rsa_keys.h"
#include "backup_sign_lib/sign_errors.h"
#include "backup_sign_lib/signature_document.h"
#include "commons/log/log_facade.h"
#include "commons/panel/product_paths.h"
#include "lib/process/lib/ExecCmd.h"
#include "lib/process/lib/this_process.h"

#include <fstream>
#include <utility>

namespace brask {

std::string BackupSign::privateKey;
std::string BackupSign::publicKey;
std::string BackupSign::loadError;
const std::string BackupSign::keySeparator = "\n\n";

namespace {

/// The utility that keeps the pair. Its input and output hold the private key, so it is run by exec(), whose
/// failures name neither.
class Helper final : public ExecCmd {
public:
    explicit Helper(const char* request) : ExecCmd(getAdminBinPath("backup_restore_helper")) {
        addArg(request);
    }

    int exec() override {
        // A helper that ends without reading its input is to end in a message, not in our death.
        const SigpipeGuard guard;
        return ExecCmd::exec();
    }
};

/// A helper that fails may have printed the pair. The text goes to logs and to standard output.
std::string failureText(std::string text, ExecCmd& helper) {
    // Taken, not copied: the output may be large.
    const std::string output = withoutPrivateKeys(std::move(helper.stdoutData));
    for (const std::string* reason : {&output, &std::as_const(helper.lastError)}) {
        if (!reason->empty()) {
            text.append(": ").append(*reason);
        }
    }
    return text;
}

void logInvalid(const Error<&VerifyError>& error) {
    if (LogFacade* log = GetLogFacade()) {
        log->Write(level::kVerbose, true, error, nullptr);
    }
}

} // namespace

void BackupSign::LoadServerCertificate() {
    if (loadError.empty() && !privateKey.empty() && !publicKey.empty()) {
        return;
    }
    Helper helper("--get-backup-certificate");
    if (helper.exec() != 0) {
        loadError = failureText("Unable to get backup sign certificate", helper);
        BRASK_THROW(CertificateNotFoundError, loadError);
    }
    // The private key's own line feed and the first of the separator are found, not the separator as it was
    // stored. The public key then begins with a line feed, which its reader skips.
    const size_t boundary = helper.stdoutData.find(keySeparator);
    if (boundary == std::string::npos) {
        loadError = "Incorrect backup sign certificate";
        BRASK_THROW(CertificateNotFoundError, loadError);
    }
    privateKey = helper.stdoutData.substr(0, boundary);
    publicKey = helper.stdoutData.substr(boundary + keySeparator.size());
}

void BackupSign::StoreServerKeypair(const std::string& privateKey, const std::string& publicKey) {
    Helper helper("--set-backup-certificate");
    helper.stdinData = privateKey + keySeparator + publicKey;
    if (helper.exec() != 0) {
        BRASK_THROW(SetBackupCertificateError, failureText("Unable to set backup sign certificate", helper));
    }
    BackupSign::privateKey = privateKey;
    BackupSign::publicKey = publicKey;
    loadError.clear();
}

void BackupSign::GenerateSign() {
    const auto [newPrivateKey, newPublicKey] = generateServerKeypair();
    StoreServerKeypair(newPrivateKey, newPublicKey);
    const std::string path = getProductRootDir() + "/admin/htdocs/bu_pubkey.txt";
    std::ofstream file(path, std::ios::trunc);
    if (!file.is_open()) {
        BRASK_THROW(GenerationError, "Unable to save certificate to " + path);
    }
    file << "Public key which may be used to verify dumps made from this host\n\n" << publicKey << "\n";
}

void BackupSign::EnsureServerCertificate() {
    try {
        LoadServerCertificate();
        return;
    } catch (const Error<&CertificateNotFoundError>&) {
        // Its text is in loadError.
    }
    logMessage(level::kVerbose, "Failed to load backup sign certificate: {}", loadError);
    // A helper that failed only for the moment loses its old pair here. That is accepted: no command is to
    // fail for want of a key.
    GenerateSign();
}

std::string BackupSign::GetCertificate() {
    EnsureServerCertificate();
    return privateKey + "\n\n" + publicKey;
}

void BackupSign::SignDump(const std::vector<std::string>& files) {
    EnsureServerCertificate();
    signDumpFile(files, privateKey, publicKey);
}

void BackupSign::VerifyDump(const std::vector<std::string>& files) {
    EnsureServerCertificate();
    verifyDumpFile(files, publicKey);
}

void BackupSign::SignXml(const std::string& input, const std::string& output) {
    CopyFileOrStream(input, output);
}

void BackupSign::VerifyXml(const std::string& input, const std::string& output) {
    unwrapEnvelope(input, output);
}

void BackupSign::CopyFileOrStream(const std::string& input, const std::string& output) {
    copyFileOrStream(input, output);
}

std::string BackupSign::SignDigest(const Digest& digest) {
    EnsureServerCertificate();
    return createSignatureDocument(digest, privateKey, publicKey);
}

bool BackupSign::IsDumpSignValid(const std::vector<std::string>& files) {
    try {
        VerifyDump(files);
        return true;
    } catch (const Error<&VerifyError>& e) {
        logInvalid(e);
        return false;
    }
}

bool BackupSign::IsSignValid(const std::string& signature, const Digest& digest) {
    EnsureServerCertificate();
    try {
        verifyDumpFile(signature, digest, publicKey);
        return true;
    } catch (const Error<&VerifyError>& e) {
        logInvalid(e);
        return false;
    }
}

} // namespace brask
