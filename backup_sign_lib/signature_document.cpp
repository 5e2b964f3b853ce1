#include "backup_sign_lib/signature_document.h"

#include "backup_sign_lib/base64.h"
#include "backup_sign_lib/malloc_ptr.h"
#include "backup_sign_lib/rsa_keys.h"
#include "backup_sign_lib/rsa_signature.h"
#include "backup_sign_lib/sign_errors.h"
#include "commons/errors/format.h"
#include "commons/xml/xpath_expr.h"

#include <array>
#include <map>

namespace brask {

namespace {

/// The namespace of XML Signature Syntax and Processing, and the prefix of its algorithms.
constexpr const char* kSignatureNamespace = "http://www.w3.org/2000/09/xmldsig#";

/// Canonical XML 1.0. Named in the document, applied by nobody.
constexpr const char* kCanonicalization = "http://www.w3.org/TR/2001/REC-xml-c14n-20010315";

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

std::shared_ptr<SignatureData> parseSignXml(const tXmlBmmDocument& document) {
    const std::map<std::string, std::string> namespaces{{"n", kSignatureNamespace}};
    const std::array<std::string, 4> paths{"n:SignedInfo/n:Reference/n:DigestValue", "n:SignatureValue",
                                           "n:KeyInfo/n:RSAKeyValue/n:Modulus",
                                           "n:KeyInfo/n:RSAKeyValue/n:Exponent"};
    for (const std::string& path : paths) {
        const tXPathExpr found(document.doc_.get(), toXml(path), document.root_, namespaces);
        if (xmlXPathCastToBoolean(found.getResult()) == 0) {
            // "Requred" is sic: callers match it.
            BRASK_THROW(WrongSignatureDataError, "Requred XML element is absent: " + path);
        }
    }
    const XmlNode root(document.doc_.get(), document.root_);
    const auto text = [&](const std::string& path) {
        return getNodeContent(root.getNode(path, namespaces).node_);
    };
    return std::make_shared<SignatureData>(
        SignatureData{text(paths[0]), text(paths[1]), text(paths[2]), text(paths[3])});
}

} // namespace brask
