#pragma once

// The signature document: the text after the last byte of a signed dump. It has the shape of an
// XML digital signature, but it is written as plain text, to the byte, and nothing is ever canonicalised.

#include "backup_sign_lib/digest.h"
#include "commons/xml/xml_document.h"

#include <memory>
#include <optional>
#include <string>

namespace brask {

/// The four texts of a document as they are there, line feeds included.
struct SignatureData {
    std::string digestValue;
    std::string signatureValue;
    /// The signer's public key. It must be there but proves nothing: a dump is verified with this server's
    /// own.
    std::string modulus;
    std::string exponent;
};

/// The document that signs `digest` with a pair of keys in PEM. It begins with "<Signature xmlns=", ends
/// without a line end, and has 1,196 bytes with a key of 1024 bits. Finishes the digest. Raises SignError.
std::string createSignatureDocument(const Digest& digest, const std::string& privateKey,
                                    const std::string& publicKey);

/// Parses the text of a document and finds its root. Raises VerifyError when it isn't well-formed,
/// tError_WrongDoc when its root is no signature.
tXmlBmmDocument openSignatureDocument(const std::string& signature);

/// Takes the texts out of a document whose root is set. Raises WrongSignatureDataError for the first element,
/// in the order of the fields, that is missing or outside the namespace of XML signatures.
std::shared_ptr<SignatureData> parseSignXml(const tXmlBmmDocument& document);

/// Two statements of an opened document that verifying does not look at: the name of the signer's key, and
/// the signature's algorithm, such as "rsa-sha1", without the namespace of XML signatures.
std::optional<std::string> readKeyName(const tXmlBmmDocument& document);
std::optional<std::string> readAlgorithm(const tXmlBmmDocument& document);

/// Whether a document was made for this digest. Finishes the digest.
bool isDigestOf(const SignatureData& data, const Digest& digest);

} // namespace brask
