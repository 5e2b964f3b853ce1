#include "backup_sign_lib/rsa_keys.h"
#include "backup_sign_lib/sign_errors.h"
#include "backup_sign_lib/signature_document.h"
#include "tests/support/program.h"
#include "tests/support/thrown_text.h"

#include <gtest/gtest.h>

namespace {

using namespace brask;

std::shared_ptr<SignatureData> parse(const std::string& text) {
    tXmlBmmDocument document(text);
    document.initFileDoc(nullptr);
    return parseSignXml(document);
}

/// Writes the document of the file "data" and the key "key" with values of the openssl command alone.
constexpr const char* kOpensslDocument = R"sh(cd "$1"
value() { openssl base64 -A | sed 's/.\{71\}/&\n/g'; }
printf '<Signature xmlns="http://www.w3.org/2000/09/xmldsig#">\n<SignedInfo>\n'
printf '<CanonicalizationMethod Algorithm="http://www.w3.org/TR/2001/REC-xml-c14n-20010315"/>\n'
printf '<SignatureMethod Algorithm="http://www.w3.org/2000/09/xmldsig#rsa-sha1"/>\n<Reference>\n<Transforms>\n'
printf '<Transform Algorithm="http://www.w3.org/2000/09/xmldsig#enveloped-signature"/>\n</Transforms>\n'
printf '<DigestMethod Algorithm="http://www.w3.org/2000/09/xmldsig#sha1"/>\n<DigestValue>'
openssl dgst -sha1 -binary data | value
printf '</DigestValue>\n</Reference>\n</SignedInfo>\n<SignatureValue>'
openssl dgst -sha1 -sign key data | value
printf '</SignatureValue>\n<KeyInfo><KeyName>bsabackup.pem</KeyName>\n<RSAKeyValue>\n<Modulus>'
openssl rsa -noout -modulus -in key | cut -c 9- | tr -d '\n' | value
printf '</Modulus>\n<Exponent>MTAwMDE=</Exponent>\n</RSAKeyValue>\n</KeyInfo>\n</Signature>')sh";

TEST(SignatureDocument, IsToTheByteWhatOpensslsValuesGive) {
    const test_support::TempDir dir;
    const auto [privateKey, publicKey] = generateServerKeypair();
    dir.write("key", privateKey);
    dir.write("data", "some dump");
    Digest digest;
    digest.update("some dump", 9);
    const std::string document = createSignatureDocument(digest, privateKey, publicKey);
    EXPECT_EQ(document, test_support::runProgram({"/bin/sh", "-c", kOpensslDocument, "sh", dir.path()}).out);
    EXPECT_EQ(document.size(), 1196U);
}

TEST(SignatureDocument, TextsAreTakenAsTheyStandAndTheFirstMissingElementIsNamed) {
    const std::string name = "<Signature xmlns='http://www.w3.org/2000/09/xmldsig#'>";
    const std::string digest =
        "<SignedInfo><Reference><DigestValue> d </DigestValue></Reference></SignedInfo>";
    const std::string value = "<SignatureValue>\ns&amp;</SignatureValue>";
    const std::string key = "<KeyInfo><RSAKeyValue><Exponent>e</Exponent><Modulus/></RSAKeyValue></KeyInfo>";
    const auto data = parse(name + key + value + digest + "</Signature>");
    EXPECT_EQ(data->digestValue + "|" + data->signatureValue + "|" + data->modulus + "|" + data->exponent,
              " d |\ns&||e");
    const std::pair<std::string, std::string> cases[] = {
        {name + digest + value + "<Modulus/>", "KeyInfo/n:RSAKeyValue/n:Modulus"},
        {name + digest + key, "SignatureValue"},
        {name + "<DigestValue>d</DigestValue>" + value, "SignedInfo/n:Reference/n:DigestValue"},
        {"<Signature>" + digest + value + key, "SignedInfo/n:Reference/n:DigestValue"},
    };
    for (const auto& [document, missing] : cases) {
        EXPECT_EQ(test_support::thrownText<Error<&WrongSignatureDataError>>(
                      [&] { parse(document + "</Signature>"); }),
                  "Requred XML element is absent: n:" + missing);
    }
}

} // namespace
