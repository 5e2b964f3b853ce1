#include "backup_sign_lib/signature_document.h"

#include "backup_sign_lib/base64.h"
#include "backup_sign_lib/rsa_keys.h"
#include "backup_sign_lib/rsa_signature.h"
#include "backup_sign_lib/sign_errors.h"
#include "commons/errors/format.h"
#include "commons/xml/xml_globals.h"
#include "commons/xml/xpath_expr.h"

#include <array>
#include <cstring>
#include <map>

namespace brask {

namespace {

/// The namespace of XML Signature Syntax and Processing, and the prefix of its algorithms.
constexpr const char* kSignatureNamespace = "http://www.w3.org/2000/09/xmldsig#";

/// Canonical XML 1.0. Named in the document, applied by nobody.
constexpr const char* kCanonicalization = "http://www.w3.org/TR/2001/REC-xml-c14n-20010315";

using Namespaces = std::map<std::string, std::string>;

const Namespaces& signatureNamespaces() {
    static const Namespaces namespaces{{"n", kSignatureNamespace}};
    return namespaces;
}

bool isPresent(const tXmlBmmDocument& document, const std::string& path) {
    const tXPathExpr found(document.doc_.get(), toXml(path), document.root_, signatureNamespaces());
    return xmlXPathCastToBoolean(found.getResult()) != 0;
}

std::string textOf(const tXmlBmmDocument& document, const std::string& path) {
    const XmlNode root(document.doc_.get(), document.root_);
    return getNodeContent(root.getNode(path, signatureNamespaces()).node_);
}

std::optional<std::string> textIfPresent(const tXmlBmmDocument& document, const std::string& path) {
    return isPresent(document, path) ? std::optional(textOf(document, path)) : std::nullopt;
}

} // namespace

std::string createSignatureDocument(const Digest& digest, const std::string& privateKey,
                                    const std::string& publicKey) {
    const MallocPtr<char> digestValue(base64Encode(digest.getValue(), static_cast<int>(digest.getSize())));
    const std::string signatureValue = countSignature(digest, privateKey);
    std::string modulus;
    std::string exponent;
    composePublickey(publicKey, modulus, exponent);
    return fmtlib::format(R"(<Signature xmlns="{0}">
<SignedInfo>
<CanonicalizationMethod Algorithm="{1}"/>
<SignatureMethod Algorithm="{0}rsa-sha1"/>
<Reference>
<Transforms>
<Transform Algorithm="{0}enveloped-signature"/>
</Transforms>
<DigestMethod Algorithm="{0}sha1"/>
<DigestValue>{2}</DigestValue>
</Reference>
</SignedInfo>
<SignatureValue>{3}</SignatureValue>
<KeyInfo><KeyName>bsabackup.pem</KeyName>
<RSAKeyValue>
<Modulus>{4}</Modulus>
<Exponent>{5}</Exponent>
</RSAKeyValue>
</KeyInfo>
</Signature>)",
                          kSignatureNamespace, kCanonicalization, digestValue.get(), signatureValue, modulus,
                          exponent);
}

tXmlBmmDocument openSignatureDocument(const std::string& signature) {
    // Who asks whether a signature is valid goes on when it is not.
    const XmlErrorsReset reset;
    try {
        tXmlBmmDocument document(signature);
        document.initFileDoc("Signature");
        return document;
    } catch (const Error<&tError_ParseFile>& e) {
        BRASK_THROW(VerifyError, formatMessage("Unable to parse the signature: {}", e.GetText()));
    }
}

std::shared_ptr<SignatureData> parseSignXml(const tXmlBmmDocument& document) {
    const std::array<std::string, 4> paths{"n:SignedInfo/n:Reference/n:DigestValue", "n:SignatureValue",
                                           "n:KeyInfo/n:RSAKeyValue/n:Modulus",
                                           "n:KeyInfo/n:RSAKeyValue/n:Exponent"};
    for (const std::string& path : paths) {
        if (!isPresent(document, path)) {
            // "Requred" is sic: callers match it.
            BRASK_THROW(WrongSignatureDataError, "Requred XML element is absent: " + path);
        }
    }
    return std::make_shared<SignatureData>(
        SignatureData{textOf(document, paths[0]), textOf(document, paths[1]), textOf(document, paths[2]),
                      textOf(document, paths[3])});
}

std::optional<std::string> readKeyName(const tXmlBmmDocument& document) {
    return textIfPresent(document, "n:KeyInfo/n:KeyName");
}

std::optional<std::string> readAlgorithm(const tXmlBmmDocument& document) {
    std::optional<std::string> algorithm =
        textIfPresent(document, "n:SignedInfo/n:SignatureMethod/@Algorithm");
    if (algorithm && algorithm->starts_with(kSignatureNamespace)) {
        algorithm->erase(0, std::strlen(kSignatureNamespace));
    }
    return algorithm;
}

bool isDigestOf(const SignatureData& data, const Digest& digest) {
    int length = 0;
    const MallocPtr<unsigned char> value(
        base64Decode(data.digestValue.data(), static_cast<int>(data.digestValue.size()), &length));
    return static_cast<size_t>(length) == digest.getSize() &&
           std::memcmp(value.get(), digest.getValue(), digest.getSize()) == 0;
}

} // namespace brask
