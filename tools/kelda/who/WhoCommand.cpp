#include "who/WhoCommand.h"

#include <stdexcept>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "FaultNote.h"
#include "UnreadableFolder.h"
#include "Values.h"
#include "who/WhoBatch.h"

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
    "value of a token and of %agentString; it matches any text.\n"
    "\n"
    "--device and --devices ask many devices; those where nobody mounts the path are not shown.\n"
    "A device is a folder with 'preinit' and 'profiles' in it, or an image with the default\n"
    "folders below it.";

constexpr char const* footer =
    "Exit status:\n"
    "  0  The mounts were printed.\n"
    "  1  Nobody mounts the path, on any of the devices, or the answer could\n"
    "     not be written.\n"
    "  2  The call was wrong, or a folder could not be opened.\n"
    "\n"
    "Examples:\n"
    "  kelda who sys/clock --flag w\n"
    "  kelda who 'hardware/fan/**' --format json\n"
    "  kelda who '**' --type 'Fan::*'\n"
    "  kelda who sys/clock --flag w --devices images.txt";

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
    batch_.addTo(command, "Ask the device in this folder; repeatable");
    auto* const format =
        command.add_option("--format", format_, "How to print: for people or as JSON");
    mustBeOneOf(*format, {"table", "json", "jsonl"});
    format->default_str("table");
    command.footer(footer);
    return command;
}

Report WhoCommand::run(bool colour) const {
    auto report = batch_.isGiven() ? askEachDevice(colour) : askDevice(colour);
    // Many devices have their lines already.
    if (format_ == "jsonl" && !batch_.isGiven() && !report.results.empty())
        report.results = inOneLine(report.results);
    return report;
}

Report WhoCommand::askEachDevice(bool colour) const {
    WhoBatch const batch(question_, format_, colour);
    try {
        return askEachCounted(
            batch_, [&batch](std::string const& device) { return batch.answerOf(device); },
            batch.around(), [&batch](BatchTotals const& totals) { return batch.end(totals); });
    } catch (std::runtime_error const& error) {
        return {"", fmt::format("kelda who: {}\n", error.what()), ExitStatus::wrongCall};
    }
}

Report WhoCommand::askDevice(bool colour) const {
    auto const parser = device_.parser();
    auto const& device = parser->device();
    bool const isJson = format_ != "table";
    if (auto report = unreadableFolderReport(device, isJson ? Format::json : Format::table))
        return *report;
    auto const answer = askWho(device, question_);
    Report report{"", faultNote(*parser), ExitStatus::success};
    if (isJson)
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
