#pragma once

// The command line: its options, the two parsers of the older calling forms, and the help text.

#include "commons/errors/error.h"

#include <boost/program_options/option.hpp>
#include <boost/program_options/options_description.hpp>
#include <boost/program_options/variables_map.hpp>

#include <string>
#include <utility>
#include <vector>

BRASK_ERROR_TAG(MissingOptionError, "Missing option {}")

/// The parsed arguments of one run. No option has a short name and none is required; positional arguments are
/// accepted and ignored.
class CommandLine {
public:
    /// Raises the parsing library's own exceptions, all of them std::exception, for an unknown option, a
    /// missing value or a second value where one is allowed.
    CommandLine(int argc, const char* const* argv);

    /// What was given, with the defaults filled in.
    const boost::program_options::variables_map& values() const { return given; }

    /// The options in the order of the help text.
    const boost::program_options::options_description& visible() const { return shown; }

    bool has(const std::string& option) const { return given.count(option) != 0; }

private:
    boost::program_options::options_description shown;
    boost::program_options::variables_map given;
};

/// Takes the bare words "generate", "sign" and "verify" as commands: (`token`, ""), or ("", "") for any other
/// token.
std::pair<std::string, std::string> parseBareCommand(const std::string& token);

/// Takes the old forms `sign FILE` and `verify FILE`, also with dashes after the word. When `tokens` begins
/// with one, the result is that one option and `tokens` is emptied: everything after the file name is lost.
/// Otherwise the result is empty and `tokens` stays. Raises std::out_of_range for empty `tokens`.
std::vector<boost::program_options::option> parseDeprecatedCommand(std::vector<std::string>& tokens);

/// Writes the help text to standard output: every option of `visible` with its description, an empty line
/// after each.
void printHelp(const boost::program_options::options_description& visible);

/// Raises Error<&MissingOptionError, ExDefault> when `vm` has no entry for `name`.
void checkOption(const boost::program_options::variables_map& vm, const std::string& name);
