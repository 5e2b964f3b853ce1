#include "dumpsig/report.h"

#include "dumpsig/output.h"

#include <nlohmann/json.hpp>

namespace dumpsig {

namespace {

using Json = nlohmann::ordered_json;

constexpr const char* judgementName(Judgement judgement) {
    switch (judgement) {
    case Judgement::kIntact:
        return "intact";
    case Judgement::kNotSigned:
        return "not-signed";
    case Judgement::kDigestWrong:
        return "digest-wrong";
    case Judgement::kSignatureWrong:
        return "signature-wrong";
    case Judgement::kSignatureUnreadable:
        return "signature-unreadable";
    case Judgement::kUnknown:
        break;
    }
    return "unknown";
}

template <class T>
Json orNull(const std::optional<T>& value) {
    return value ? Json(*value) : Json();
}

Json orNull(const std::optional<std::string>& text) {
    return text ? Json(toUtf8(*text)) : Json();
}

Json nullIfEmpty(const std::string& text) {
    return text.empty() ? Json() : Json(toUtf8(oneLine(text)));
}

Json keyJson(const PublicKey* key) {
    return key == nullptr ? Json() : Json({{"file", toUtf8(key->file)}, {"fingerprint", key->fingerprint}});
}

Json namesJson(const std::vector<std::string>& names) {
    Json list = Json::array();
    for (const std::string& name : names) {
        list.push_back(toUtf8(name));
    }
    return list;
}

/// A line of `info`, none for what is not known.
template <class T>
std::string factLine(const char* name, const std::optional<T>& value) {
    constexpr std::size_t kColumn = 18;
    std::string line = name;
    line.resize(kColumn, ' ');
    if constexpr (std::is_same_v<T, std::string>) {
        return value ? line + oneLine(*value) + "\n" : "";
    } else {
        return value ? line + std::to_string(*value) + "\n" : "";
    }
}

} // namespace

std::string verdictText(const Verdict& verdict) {
    return verdict.judgement != Judgement::kIntact
               ? verdict.text + "\n"
               : "intact\nsigned with " + verdict.key->fingerprint + " " + oneLine(verdict.key->file) + "\n";
}

std::string verdictJson(const Verdict& verdict, const std::vector<std::string>& volumes, double seconds,
                        const std::string& error) {
    const Json json{{"verdict", judgementName(verdict.judgement)},
                    {"volumes", namesJson(volumes)},
                    {"signedBytes", orNull(verdict.signedBytes)},
                    {"documentOffset", orNull(verdict.documentOffset)},
                    {"documentBytes", orNull(verdict.documentBytes)},
                    {"digest", orNull(verdict.digest)},
                    {"key", keyJson(verdict.key)},
                    {"seconds", seconds},
                    {"error", nullIfEmpty(error.empty() ? verdict.text : error)}};
    return json.dump() + "\n";
}

std::string factsText(const DocumentFacts& facts) {
    return factLine("document offset", facts.offset) + factLine("document bytes", facts.size) +
           factLine("digest", facts.digest) + factLine("algorithm", facts.algorithm) +
           factLine("key bits", facts.keyBits) + factLine("key fingerprint", facts.keyFingerprint) +
           factLine("key name", facts.keyName);
}

std::string factsJson(const DocumentFacts& facts, const std::string& error) {
    const Json json{
        {"documentOffset", orNull(facts.offset)}, {"documentBytes", orNull(facts.size)},
        {"digest", orNull(facts.digest)},         {"algorithm", orNull(facts.algorithm)},
        {"keyBits", orNull(facts.keyBits)},       {"keyFingerprint", orNull(facts.keyFingerprint)},
        {"keyName", orNull(facts.keyName)},       {"error", nullIfEmpty(error)}};
    return json.dump() + "\n";
}

} // namespace dumpsig
