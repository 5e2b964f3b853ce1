#pragma once

// Signing and verifying a dump. A dump is one file or an ordered list of volumes, and its content plays no
// part. Signed, it has a signature document after the last byte of its last volume; the signature covers all
// that precedes it, in the order of the volumes.
//
// `files` holds the volumes in order and must not be empty. Keys are PEM text.

#include "backup_sign_lib/digest.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace brask {

/// Appends a signature document to the last volume. A signature that is there already is signed along with
/// the rest. Until then nothing is written, so a failure leaves the volumes as they were; a failure of the
/// write itself goes unnoticed. Raises FileNotFoundError, IsNotRegularFileError, SignError.
void signDumpFile(const std::vector<std::string>& files, const std::string& privateKey,
                  const std::string& publicKey);

/// Returns if the dump is what the owner of the public key signed. Raises otherwise:
/// - FileNotFoundError, IsNotRegularFileError, SignError when a volume can't be read;
/// - VerifyError when there is no signature, when it isn't well-formed, or when it isn't right;
/// - tError_WrongDoc, WrongSignatureDataError when the document is no signature.
///
/// A signature that begins its volume never verifies: the volume's part of the dump is then empty, which
/// countDigest takes to mean the whole volume.
void verifyDumpFile(const std::vector<std::string>& files, const std::string& publicKey);

/// The same for a signature document and the digest that it should sign.
void verifyDumpFile(const std::string& signature, const Digest& digest, const std::string& publicKey);

/// How much of the end of a last volume is searched for a signature document.
inline constexpr size_t kSignatureTailRange = 4096;

/// Where the last signature document begins in `tail`, the end of a volume; it takes up all the rest. npos
/// when there is none.
size_t findSignature(std::string_view tail);

/// The last signature document in the last 4,096 bytes of a file, with all that follows it, and its offset in
/// the file. Empty, with offset 0, when there is none or the file can't be read.
std::string readDumpSignature(const std::string& path, size_t& position);

} // namespace brask
