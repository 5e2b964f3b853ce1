#pragma once

#include "backup_sign_lib/digest.h"

#include <string>
#include <vector>

namespace brask {

/// What the command line talks to: dumps signed and verified with the server's key pair.
///
/// The pair is kept by the panel's utility backup_restore_helper, and is fetched from there when it is first
/// needed. If no pair can be fetched, for whatever reason, a new one is made and handed to the helper, so
/// every command works on a server that never had a pair; dumps signed with a pair that was there
/// nevertheless no longer verify then. The pair lives as long as the process and is shared by all objects of
/// the class. One thread only.
class BackupSign {
public:
    /// Fetches the pair, unless it is here and no load has failed since the last store. Nothing checks that
    /// what comes is keys. Raises CertificateNotFoundError, with the pair left as it was.
    void LoadServerCertificate();

    /// Hands a pair to the helper, and uses it from now on. Raises SetBackupCertificateError, with the pair
    /// left as it was.
    void StoreServerKeypair(const std::string& privateKey, const std::string& publicKey);

    /// Makes a new pair, whether or not there is one, stores it, and publishes the public key in
    /// admin/htdocs/bu_pubkey.txt below the product root. Raises RsaKeyGenerationError,
    /// SetBackupCertificateError, and GenerationError when the file can't be opened: the new pair is in force
    /// then.
    void GenerateSign();

    /// LoadServerCertificate, or GenerateSign if that fails.
    void EnsureServerCertificate();

    /// Both keys, the private one first, with an empty line between. The operations from here on begin with
    /// EnsureServerCertificate and raise what it and the function named raise.
    std::string GetCertificate();

    /// signDumpFile.
    void SignDump(const std::vector<std::string>& files);

    /// verifyDumpFile.
    void VerifyDump(const std::vector<std::string>& files);

    /// createSignatureDocument.
    std::string SignDigest(const Digest& digest);

    /// verifyDumpFile, with false for VerifyError, which is logged.
    bool IsDumpSignValid(const std::vector<std::string>& files);
    bool IsSignValid(const std::string& signature, const Digest& digest);

    /// The deprecated commands, which need no key and sign and check nothing: see legacy_xml.h.
    void SignXml(const std::string& input, const std::string& output);
    void VerifyXml(const std::string& input, const std::string& output);
    void CopyFileOrStream(const std::string& input, const std::string& output);

private:
    static std::string privateKey;
    static std::string publicKey;
    /// Why a load failed. A store clears it; a later load that succeeds does not.
    static std::string loadError;
    /// What separates the private from the public key on the way from and to the helper.
    static const std::string keySeparator;
};

} // namespace brask
