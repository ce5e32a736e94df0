#include "who/WhoCommand.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "FaultNote.h"
#include "UnreadableFolder.h"
#include "Values.h"

namespace KeldaTool {
namespace {

constexpr char const* description =
    "Show which agents mount a path.\n"
    "\n"
    "All profiles are read, as for all agents at once. Each mount is shown with the flags of all\n"
    "its lines and with the first line, of an included file or a default group as well; with\n"
    "--flag, with the first line that gives one of the flags. JSON tells all lines.\n"
    "\n"
    "In PATH, '*' stands for any text within a segment, '?' for one character and '**', as a\n"
    "whole segment, for any number of segments. In the paths of profiles, '*' stands for the\n"
    "value of a token and of %agentString; it matches any text.";

constexpr char const* footer = "Exit status:\n"
                               "  0  The mounts were printed.\n"
                               "  1  Nobody mounts the path, or the answer could not be written.\n"
                               "  2  The call was wrong, or a folder could not be opened.\n"
                               "\n"
                               "Examples:\n"
                               "  kelda who sys/clock --flag w\n"
                               "  kelda who 'hardware/fan/**' --format json\n"
                               "  kelda who '**' --type 'Fan::*'";

std::string refuseUnknownFlags(std::string const& letters) {
    return areFlagLetters(letters)
               ? ""
               : fmt::format("must be letters of rwcitfSDdOApKLnNECey, not '{}'", letters);
}

} // namespace

CLI::App& WhoCommand::addTo(CLI::App& program) {
    auto& command = *program.add_subcommand("who", description);
    auto* const path =
        command.add_option("PATH", question_.path, "Path, such as sys/clock, or a pattern");
    mustBeRelativePath(*path->required());
    auto* const flags = command.add_option(
        "--flag", question_.flags, "Only mounts that have all of these flags, such as w or rw");
    flags->type_name("LETTERS")->check(CLI::Validator(refuseUnknownFlags, ""));
    mustNotBeEmpty(*flags);
    auto* const type = command.add_option("--type", question_.type,
                                          "Only mounts of this type; '*' stands for any text");
    mustNotBeEmpty(*type->type_name("TYPE"));
    device_.addTo(command);
    addFormatOption(command, format_);
    command.footer(footer);
    return command;
}

Report WhoCommand::run(bool colour) const {
    auto const parser = device_.parser();
    auto const& device = parser->device();
    if (auto report = unreadableFolderReport(device, format_))
        return *report;
    auto const answer = askWho(device, question_);
    Report report{"", faultNote(*parser), ExitStatus::success};
    if (format_ == Format::json)
        report.results = whoDocument(device, question_, answer);
    else if (!answer.rows.empty())
        report.results = whoTable(device, answer, colour);
    if (answer.rows.empty()) {
        report.messages = nobodyText(device, question_, answer) + report.messages;
        report.status = ExitStatus::failure;
    }
    return report;
}

} // namespace KeldaTool
