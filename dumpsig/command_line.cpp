#include "dumpsig/command_line.h"

#include "dumpsig/output.h"

#include <algorithm>
#include <iterator>
#include <memory>

#include <CLI/CLI.hpp>

namespace dumpsig {

namespace {

/// Prints what follows the options in a call, which the library does not know: see Parser::takeFiles.
class HelpFormat final : public CLI::Formatter {
public:
    explicit HelpFormat(std::string files) : files(std::move(files)) {}

    std::string make_usage(const CLI::App* app, std::string name) const override {
        return "Usage: " + (name.empty() ? app->get_name() : name) + " [OPTION]… " + files + "\n";
    }

private:
    std::string files;
};

/// The commands with their options.
class Parser {
public:
    Parser();

    CommandLine parse(std::vector<std::string> arguments);

private:
    CLI::App* addCommand(Command command, const char* name, const char* files, const char* description);
    static void addFlag(CLI::App* command, const char* name, bool& value, const char* description);
    void addKeys(CLI::App* command);
    void addJson(CLI::App* command);
    void addProgress(CLI::App* command);
    void addVerify();
    void addStrip();
    void takeFiles(const CLI::App& command);
    void refuseStrangers() const;

    CommandLine call;
    CLI::App app{"Verifies signed dumps anywhere, with nothing but the public key.", "dumpsig"};
};

constexpr const char* kExitCodes =
    "Exit code: 0 yes or done; 1 no (not intact, not signed); 2 it could not be told.";

Parser::Parser() {
    app.formatter(std::make_shared<HelpFormat>("COMMAND …"));
    app.set_version_flag("--version", "dumpsig " DUMPSIG_VERSION, "Print the version and exit");
    app.require_subcommand(0, 1);
    app.allow_extras(); // of the commands, too
    app.footer(std::string("\"dumpsig COMMAND --help\" tells the options of a command.\n") + kExitCodes);
    addVerify();
    addJson(addCommand(Command::kInfo, "info", "VOLUME…", "Tell what the document of the last volume says"));
    addStrip();
    CLI::App* const cat = addCommand(Command::kCat, "cat", "VOLUME…",
                                     "Write the content of a dump to standard output, verified on the way");
    addKeys(cat);
    addProgress(cat);
    addCommand(Command::kFingerprint, "fingerprint", "KEYFILE…", "Print the fingerprint of each public key");
}

CLI::App* Parser::addCommand(Command command, const char* name, const char* files, const char* description) {
    CLI::App* const added = app.add_subcommand(name, description);
    added->formatter(std::make_shared<HelpFormat>(files));
    added->footer(kExitCodes);
    added->callback([this, command, added] {
        call.command = command;
        takeFiles(*added);
    });
    return added;
}

void Parser::addFlag(CLI::App* command, const char* name, bool& value, const char* description) {
    command->add_flag(name, value, description)->disable_flag_override();
}

void Parser::addKeys(CLI::App* command) {
    command
        ->add_option(
            "-k,--key", call.keys,
            "Public keys in PEM; may be given several times. Without it, the key that this server publishes")
        ->type_name("FILE")
        ->expected(1)
        ->allow_extra_args(false)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
}

void Parser::addJson(CLI::App* command) {
    addFlag(command, "--json", call.json, "Print one JSON object on one line");
}

void Parser::addProgress(CLI::App* command) {
    CLI::Option* const on =
        command->add_flag("--progress")->description("Show the progress, terminal or not");
    CLI::Option* const off = command->add_flag("--no-progress")->description("Show none");
    on->disable_flag_override();
    off->disable_flag_override();
    command->parse_complete_callback([this, command, on, off] {
        for (const CLI::Option* option : command->parse_order()) {
            if (option == on || option == off) {
                call.progress = option == on;
            }
        }
    });
}

void Parser::addVerify() {
    CLI::App* const verify = addCommand(Command::kVerify, "verify", "VOLUME…",
                                        "Is the dump intact, and signed with one of these keys?");
    addKeys(verify);
    addJson(verify);
    addFlag(verify, "-q,--quiet", call.quiet, "Print nothing on standard output; the exit code tells");
    addProgress(verify);
}

void Parser::addStrip() {
    CLI::App* const strip =
        addCommand(Command::kStrip, "strip", "VOLUME", "Give the volume as it was before the last signing");
    strip->add_option("-o,--output", call.output, "Write it there; \"-\" is standard output")
        ->type_name("FILE");
    addFlag(strip, "--in-place", call.inPlace, "Cut the document off the volume itself");
    addFlag(strip, "--force", call.force, "Replace the file of -o if it exists");
    addProgress(strip);
    strip->footer(
        std::string("Of what comes through a pipe and goes to standard output, all has been written when "
                    "it turns out\nthat nothing was signed: mind the exit code.\n") +
        kExitCodes);
}

/// Whatever is no option. The library would take "[a,b]" for two names, so it is not asked to.
void Parser::takeFiles(const CLI::App& command) {
    for (const std::string& word : command.remaining()) {
        if (word.starts_with('-') && word != kStandardStream) {
            throw CLI::ExtrasError({word});
        }
        call.files.push_back(word);
    }
}

/// What stands outside the commands.
void Parser::refuseStrangers() const {
    if (const std::vector<std::string> words = app.remaining(); !words.empty()) {
        BRASK_THROW(UsageError, words.front() + " is neither a command nor an option");
    }
    if (call.command == Command::kShowText) {
        BRASK_THROW(UsageError, "no command is given");
    }
}

CommandLine Parser::parse(std::vector<std::string> arguments) {
    const auto endOfOptions = std::find(arguments.begin(), arguments.end(), "--");
    std::vector<std::string> options(arguments.begin(), endOfOptions);
    // The library takes "++" for the end of a command.
    std::replace(options.begin(), options.end(), std::string("++"), std::string("./++"));
    std::reverse(options.begin(), options.end());
    try {
        app.parse(std::move(options));
    } catch (const CLI::CallForVersion& e) {
        call.text = std::string(e.what()) + "\n";
        return call;
    } catch (const CLI::CallForHelp&) {
        call.text = app.help();
        return call;
    } catch (const CLI::ParseError& e) {
        BRASK_THROW(UsageError, e.what());
    }
    refuseStrangers();
    if (endOfOptions != arguments.end()) {
        call.files.insert(call.files.end(), std::next(endOfOptions), arguments.end());
    }
    return call;
}

void require(bool condition, const char* text) {
    if (!condition) {
        BRASK_THROW(UsageError, text);
    }
}

bool isStandardStream(const std::string& name) {
    return name == kStandardStream;
}

void checkStrip(const CommandLine& call) {
    require(call.files.size() == 1, "strip takes one volume");
    require(call.output.has_value() != call.inPlace, "strip needs either -o or --in-place");
    require(call.output != "", "-o needs the name of a file");
    require(!call.force || (call.output && !isStandardStream(*call.output)), "--force belongs to -o FILE");
    require(!call.inPlace || !isStandardStream(call.files[0]), "standard input can't be stripped in place");
}

void check(const CommandLine& call) {
    if (call.command == Command::kShowText) {
        return;
    }
    require(!call.files.empty(),
            call.command == Command::kFingerprint ? "no key file is given" : "no volume is given");
    if (call.command != Command::kFingerprint) {
        require(std::none_of(call.files.begin(), std::prev(call.files.end()), isStandardStream),
                "standard input, -, can only be the last volume");
    }
    require(!call.quiet || !call.json, "-q and --json contradict each other");
    if (call.command == Command::kStrip) {
        checkStrip(call);
    }
}

} // namespace

CommandLine parseCommandLine(int argc, const char* const* argv) {
    const CommandLine call = Parser().parse({argv + std::min(argc, 1), argv + argc});
    check(call);
    return call;
}

} // namespace dumpsig
