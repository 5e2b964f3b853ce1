#include "backup_sign_lib/private_key_text.h"

#include <gtest/gtest.h>

namespace {

using namespace brask;

std::string block(const std::string& label) {
    return "-----BEGIN " + label + "-----\nMIIC\n-----END " + label + "-----";
}

TEST(PrivateKeyText, EveryPrivateKeyIsTakenOutAndNothingElse) {
    const std::string others = block("RSA PUBLIC KEY") + "\n" + block("CERTIFICATE") + " -----BEGIN -----";
    EXPECT_EQ(withoutPrivateKeys(others), others);
    for (const std::string kind : {"RSA ", "", "ENCRYPTED ", "EC ", "OPENSSH "}) {
        const std::string key = block(kind + "PRIVATE KEY");
        EXPECT_EQ(withoutPrivateKeys("a\n" + key + key + "\n\n" + others),
                  "a\n[private key][private key]\n\n" + others);
        for (size_t length = key.find("MIIC"); length < key.size(); ++length) {
            EXPECT_EQ(withoutPrivateKeys(others + key.substr(0, length)), others + "[private key]") << length;
        }
    }
}

} // namespace
