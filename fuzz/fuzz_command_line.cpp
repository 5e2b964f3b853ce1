// Any arguments, one a line, are understood or refused. What is understood is taken from them, and a call of
// dumpsig can be written again in its plainest form.

#include "backup_sign/command_line.h"
#include "dumpsig/command_line.h"
#include "dumpsig/output.h"
#include "fuzz/fuzz.h"

#include <algorithm>
#include <optional>

namespace {

using Words = std::vector<std::string>;

std::vector<const char*> argumentsOf(const Words& words) {
    std::vector<const char*> arguments{"program"};
    for (const std::string& word : words) {
        arguments.push_back(word.c_str());
    }
    return arguments;
}

/// What backup_sign understands: options and their values. Nothing when it refuses the call.
std::optional<std::map<std::string, Words>> readByTool(const Words& words) {
    const auto arguments = argumentsOf(words);
    std::map<std::string, Words> options;
    try {
        const CommandLine call(static_cast<int>(arguments.size()), arguments.data());
        for (const auto& [name, value] : call.values()) {
            const auto* const many = boost::any_cast<Words>(&value.value());
            const auto* const one = boost::any_cast<std::string>(&value.value());
            options[name] = many != nullptr ? *many : Words{one != nullptr ? *one : ""};
        }
    } catch (const std::exception&) {
        return std::nullopt;
    }
    return options;
}

void checkTool(const Words& words) {
    const auto options = readByTool(words);
    Words withDebug = words;
    withDebug.insert(withDebug.begin(), "--verbose");
    const auto verbose = readByTool(withDebug);
    if (!options || options->contains("verbose")) {
        fuzz::require(!verbose, "a call that is refused is refused with another option as well");
        return;
    }
    auto expected = *options;
    expected["verbose"] = {""};
    fuzz::require(verbose == expected, "an option in front changes nothing else");
    for (const auto& [name, values] : *options) {
        for (const std::string& value : values) {
            fuzz::require(std::any_of(words.begin(), words.end(),
                                      [&](const std::string& word) { return word.ends_with(value); }),
                          "a value is an argument, or the end of one");
        }
    }
}

std::optional<dumpsig::CommandLine> readByDumpsig(const Words& words) {
    const auto arguments = argumentsOf(words);
    try {
        return dumpsig::parseCommandLine(static_cast<int>(arguments.size()), arguments.data());
    } catch (const brask::Error<&dumpsig::UsageError>&) {
        return std::nullopt;
    }
}

Words plainForm(const dumpsig::CommandLine& call) {
    constexpr const char* kNames[] = {"verify", "info", "strip", "cat", "fingerprint"};
    Words words{kNames[static_cast<int>(call.command)]};
    const auto addIf = [&](bool given, const char* option) {
        if (given) {
            words.emplace_back(option);
        }
    };
    // A value after "=" may begin with a hyphen; an empty one needs a word of its own.
    const auto addValue = [&](const std::string& option, const std::string& value) {
        if (value.empty()) {
            words.insert(words.end(), {option, value});
        } else {
            words.push_back(option + '=' + value);
        }
    };
    for (const std::string& key : call.keys) {
        addValue("--key", key);
    }
    if (call.output) {
        addValue("--output", *call.output);
    }
    addIf(call.json, "--json");
    addIf(call.quiet, "--quiet");
    addIf(call.inPlace, "--in-place");
    addIf(call.force, "--force");
    if (call.progress) {
        words.emplace_back(*call.progress ? "--progress" : "--no-progress");
    }
    words.emplace_back("--");
    words.insert(words.end(), call.files.begin(), call.files.end());
    return words;
}

bool isSame(const dumpsig::CommandLine& a, const dumpsig::CommandLine& b) {
    return a.command == b.command && a.text == b.text && a.keys == b.keys && a.files == b.files &&
           a.json == b.json && a.quiet == b.quiet && a.inPlace == b.inPlace && a.force == b.force &&
           a.progress == b.progress && a.output == b.output;
}

void checkDumpsig(const Words& words) {
    const auto call = readByDumpsig(words);
    if (!call) {
        return;
    }
    if (call->command == dumpsig::Command::kShowText) {
        fuzz::require(call->text.ends_with('\n'), "a text that is shown ends its line");
        return;
    }
    fuzz::require(!call->files.empty(), "a command has files");
    const auto last = std::prev(call->files.end());
    fuzz::require(call->command == dumpsig::Command::kFingerprint ||
                      std::find(call->files.begin(), last, "-") == last,
                  "standard input is only the last volume");
    const auto again = readByDumpsig(plainForm(*call));
    fuzz::require(again && isSame(*again, *call), "a call can be written again");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    const bool isTool = input.byte() % 2 == 0;
    std::string text(input.rest());
    std::replace(text.begin(), text.end(), '\0', '\n');
    isTool ? checkTool(fuzz::split(text, '\n')) : checkDumpsig(fuzz::split(text, '\n'));
    return 0;
}
