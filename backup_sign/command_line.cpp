#include "backup_sign/command_line.h"

#include <boost/algorithm/string/trim.hpp>
#include <boost/program_options/parsers.hpp>
#include <boost/program_options/value_semantic.hpp>

#include <algorithm>
#include <iostream>

namespace po = boost::program_options;

namespace {

using Paths = std::vector<std::string>;

po::options_description commandOptions() {
    po::options_description commands("Allowed commands");
    auto add = commands.add_options();
    add("generate", "Generate certificate to backup sign and verification");
    add("get-certificate", "Get certificate used for backup sign and verification");
    add("sign-dump", po::value<Paths>()->multitoken(),
        "Get sign of specified dump file (use space separated path list for multivolume archive)");
    add("verify-dump", po::value<Paths>()->multitoken(),
        "Verify sign of specified dump file (use space separated path list for multivolume archive)");
    add("sign", po::value<std::string>(), "Deprecated. Sign specified XML file");
    add("verify", po::value<std::string>(), "Deprecated. Verify sign of specified XML file");
    add("help", "Display this help page");
    return commands;
}

po::options_description runOptions() {
    po::options_description options("Allowed options");
    auto add = options.add_options();
    add("session-path", po::value<std::string>()->default_value("", ""), "Session path");
    add("verbose", "Log verbose");
    add("debug", "Log debug");
    return options;
}

po::options_description allOptions() {
    po::options_description all;
    all.add(commandOptions()).add(runOptions());
    return all;
}

std::string leftColumn(const po::option_description& option) {
    const std::string parameter = option.format_parameter();
    return parameter.empty() ? option.format_name() : option.format_name() + "=" + parameter;
}

} // namespace

CommandLine::CommandLine(int argc, const char* const* argv) : shown(allOptions()) {
    const po::options_description parsed = allOptions();
    po::store(po::command_line_parser(argc, argv)
                  .options(parsed)
                  .extra_parser(parseBareCommand)
                  .extra_style_parser(parseDeprecatedCommand)
                  .run(),
              given);
}

std::pair<std::string, std::string> parseBareCommand(const std::string& token) {
    const bool isCommand = token == "generate" || token == "sign" || token == "verify";
    return {isCommand ? token : "", {}};
}

std::vector<po::option> parseDeprecatedCommand(std::vector<std::string>& tokens) {
    const std::string command = boost::trim_right_copy_if(tokens.at(0), [](char c) { return c == '-'; });
    if (command != "sign" && command != "verify") {
        return {};
    }
    po::option option;
    option.string_key = command;
    option.position_key = -1;
    if (tokens.size() > 1) {
        option.value.push_back(tokens[1]);
    }
    // The old form knows nothing after the file name: whatever follows is dropped without a message, on
    // purpose.
    tokens.clear();
    return {option};
}

void printHelp(const po::options_description& visible) {
    std::size_t width = 0;
    for (const auto& option : visible.options()) {
        width = std::max(width, leftColumn(*option).size());
    }
    for (const auto& option : visible.options()) {
        std::string name = leftColumn(*option);
        name.resize(width, ' ');
        std::cout << name << "  " << option->description() << std::endl << std::endl;
    }
}

void checkOption(const po::variables_map& vm, const std::string& name) {
    if (vm.count(name) == 0) {
        BRASK_THROW(MissingOptionError, name);
    }
}
