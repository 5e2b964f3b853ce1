#include "backup_sign_lib/rsa_keys.h"
#include "backup_sign_lib/sign_errors.h"
#include "backup_sign_lib/signature_document.h"
#include "tests/backup_sign_lib/openssl_command.h"
#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>

namespace {

using namespace brask;
using test_support::openssl;

std::shared_ptr<SignatureData> parse(const std::string& text) {
    tXmlBmmDocument document(text);
    document.initFileDoc(nullptr);
    return parseSignXml(document);
}

/// The document with its values taken from the openssl command line alone.
std::string opensslDocument(const std::string& key, const std::string& data) {
    const auto value = [](const std::string& command) {
        return openssl(command + " | " OPENSSL_EXECUTABLE " base64 -A | fold -w 71");
    };
    return R"(<Signature xmlns="http://www.w3.org/2000/09/xmldsig#">
<SignedInfo>
<CanonicalizationMethod Algorithm="http://www.w3.org/TR/2001/REC-xml-c14n-20010315"/>
<SignatureMethod Algorithm="http://www.w3.org/2000/09/xmldsig#rsa-sha1"/>
<Reference>
<Transforms>
<Transform Algorithm="http://www.w3.org/2000/09/xmldsig#enveloped-signature"/>
</Transforms>
<DigestMethod Algorithm="http://www.w3.org/2000/09/xmldsig#sha1"/>
<DigestValue>)" +
           value("dgst -sha1 -binary " + data) +
           "</DigestValue>\n</Reference>\n</SignedInfo>\n<SignatureValue>" +
           value("dgst -sha1 -sign " + key + " " + data) + R"(</SignatureValue>
<KeyInfo><KeyName>bsabackup.pem</KeyName>
<RSAKeyValue>
<Modulus>)" +
           // "Modulus=" in front and the line feed behind are no part of the number.
           value("rsa -noout -modulus -in " + key + " | cut -c 9- | tr -d '\\n'") + R"(</Modulus>
<Exponent>MTAwMDE=</Exponent>
</RSAKeyValue>
</KeyInfo>
</Signature>)";
}

TEST(SignatureDocument, IsToTheByteWhatOpensslsValuesGiveAndReadsBack) {
    const test_support::TempDir dir;
    const auto [privateKey, publicKey] = generateServerKeypair();
    Digest digest;
    digest.update("some dump", 9);
    const std::string document = createSignatureDocument(digest, privateKey, publicKey);
    EXPECT_EQ(document, opensslDocument(dir.write("key", privateKey), dir.write("data", "some dump")));
    EXPECT_EQ(document.size(), 1196U);

    const auto data = parse(document);
    for (const std::string& element :
         {"<DigestValue>" + data->digestValue + "</", "<SignatureValue>" + data->signatureValue + "</",
          "<Modulus>" + data->modulus + "</", "<Exponent>" + data->exponent + "</"}) {
        EXPECT_NE(document.find(element), std::string::npos) << element;
    }
}

TEST(SignatureDocument, NamesTheFirstElementThatIsMissing) {
    const std::string name = "<Signature xmlns=\"http://www.w3.org/2000/09/xmldsig#\">";
    const std::string digest =
        "<SignedInfo><Reference><DigestValue> d </DigestValue></Reference></SignedInfo>";
    const std::string value = "<SignatureValue>\ns&amp;</SignatureValue>";
    const auto key = [](const std::string& content) {
        return "<KeyInfo><RSAKeyValue>" + content + "</RSAKeyValue></KeyInfo>";
    };
    const std::string modulus = "<Modulus/>";
    const std::string exponent = "<Exponent>e</Exponent>";
    const std::string end = "</Signature>";

    // Texts are taken as they stand; order and company of the elements play no part.
    const auto data = parse(name + key(exponent + "<Other/>" + modulus) + value + digest + end);
    EXPECT_EQ(data->digestValue, " d ");
    EXPECT_EQ(data->signatureValue, "\ns&");
    EXPECT_EQ(data->modulus, "");
    EXPECT_EQ(data->exponent, "e");

    const struct {
        std::string document;
        std::string missing;
    } cases[] = {
        {name + digest + value + key(modulus) + end, "n:KeyInfo/n:RSAKeyValue/n:Exponent"},
        {name + digest + value + modulus + exponent + end, "n:KeyInfo/n:RSAKeyValue/n:Modulus"},
        {name + digest + end, "n:SignatureValue"},
        {name + "<DigestValue>d</DigestValue>" + value + end, "n:SignedInfo/n:Reference/n:DigestValue"},
        {"<Signature>" + digest + value + key(modulus + exponent) + end,
         "n:SignedInfo/n:Reference/n:DigestValue"},
    };

    for (const auto& [document, missing] : cases) {
        try {
            parse(document);
            ADD_FAILURE() << document;
        } catch (const Error<&WrongSignatureDataError>& e) {
            EXPECT_EQ(e.GetText(), "Requred XML element is absent: " + missing) << document;
        }
    }
}

} // namespace
