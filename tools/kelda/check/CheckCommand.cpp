#include "check/CheckCommand.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "FileOutput.h"
#include "Output.h"
#include "Text.h"
#include "UnreadableFolder.h"
#include "Values.h"
#include "check/Baseline.h"
#include "check/CheckBatch.h"
#include "check/CheckFormats.h"
#include "check/CheckResolution.h"
#include "check/CheckedFiles.h"
#include "check/StdinOverlay.h"
#include "database/findings/Suppressions.h"
#include "devices/DeviceTree.h"

namespace KeldaTool {
namespace {

using KeldaDatabase::Severity;

constexpr char const* description =
    "Check every file of a device.\n"
    "\n"
    "All preinit files and mount profiles are read, and everything that is "
    "wrong in them is told:\n"
    "what would keep an agent from starting (errors), what works but hardly as "
    "it was meant\n"
    "(warnings), and what is worth a look (notes). With FILE, only findings in "
    "these files are\n"
    "told; the rest of the device is read all the same. '-' is a file on "
    "standard input, which\n"
    "--stdin-filename names.\n"
    "\n"
    "'kelda explain --rule NAME' explains a finding. A comment '# kelda: allow "
    "NAME: why' allows\n"
    "it on its line or, when it stands alone, on the next line that is no comment.\n"
    "\n"
    "--device and --devices check many devices. A device is a folder with 'preinit' and "
    "'profiles'\n"
    "in it, or an image with the default folders below it.";

constexpr char const* footer = "Exit status:\n"
                               "  0  No finding of severity error.\n"
                               "  1  There are errors, or the findings could not be written.\n"
                               "  2  The call was wrong, or a folder or FILE could not be read.\n"
                               "Of many devices the worst counts: 2, then 1, then 0.\n"
                               "\n"
                               "Examples:\n"
                               "  kelda check --preinit ./preinit --profiles ./profiles\n"
                               "  kelda check --root ./image --format sarif > kelda.sarif\n"
                               "  kelda check --write-baseline known.json; kelda check --baseline "
                               "known.json\n"
                               "  kelda check - --stdin-filename profiles/FanTray < buffer\n"
                               "  kelda check --devices images.txt --format jsonl > found.jsonl";

using Formatter = std::string (*)(CheckResult const&);
std::map<std::string, Formatter> const formatters = {
    {"concise", checkConcise}, {"json", checkJson},     {"jsonl", checkJsonLines},
    {"sarif", checkSarif},     {"github", checkGithub}, {"junit", checkJunit}};

bool isJson(std::string const& format) {
    return format == "json" || format == "jsonl" || format == "sarif";
}

constexpr char const* standardInput = "-";

} // namespace

CLI::App& CheckCommand::addTo(CLI::App& program) {
    auto& command = *program.add_subcommand("check", description);
    auto* const files = command.add_option("FILE", files_, "Tell only what is found in this file");
    mustNotBeEmpty(*files);
    auto* const name = command.add_option("--stdin-filename", stdinFilename_,
                                          "Which file standard input is to stand for");
    mustNotBeEmpty(*name->type_name("FILE"));
    auto* const format = command.add_option("--format", format_, "How to print the findings");
    mustBeOneOf(*format, {"text", "concise", "json", "jsonl", "sarif", "github", "junit"});
    format->default_str("text");
    selection_.addTo(command);
    command.add_flag("--werror", warningsAreErrors_, "Take warnings for errors");
    auto* const baseline =
        command.add_option("--baseline", baseline_, "Leave out the findings that this file lists");
    mustNotBeEmpty(*baseline->type_name("FILE"));
    auto* const newBaseline = command.add_option("--write-baseline", writeBaseline_,
                                                 "Write the findings to this file, for --baseline");
    mustNotBeEmpty(*newBaseline->type_name("FILE"));
    command.add_flag("-v,--verbose", verbose_, "List the files read, and those skipped with why");
    auto* const quiet = command.add_flag("-q,--quiet", quiet_, "Tell errors only");
    // A baseline holds all findings, or it would forget some that it had.
    newBaseline->excludes(baseline)->excludes(files)->excludes(quiet);
    for (char const* const rules : {"--select", "--ignore"})
        newBaseline->excludes(command.get_option(rules));
    device_.addTo(command);
    batch_.addTo(command, "Check the device in this folder; repeatable");
    // These are about the files of one device.
    for (char const* const devices : {"--device", "--devices"})
        for (auto* const single : {files, name, baseline, newBaseline})
            command.get_option(devices)->excludes(single);
    command.footer(footer);
    return command;
}

std::string CheckCommand::wrongCallResults(std::vector<std::string> const& words,
                                           std::string const& what) const {
    for (std::size_t i = 0; i < words.size(); ++i) {
        bool const isOption = words[i] == "--format" && i + 1 < words.size();
        if (isOption ? isJson(words[i + 1])
                     : words[i].starts_with("--format=") &&
                           isJson(words[i].substr(words[i].find('=') + 1)))
            return checkErrorJson(what);
    }
    return {};
}

Report CheckCommand::failure(std::string const& what) const {
    return {isJson(format_) ? checkErrorJson(what) : std::string(),
            fmt::format("kelda check: {}\n", what), ExitStatus::wrongCall};
}

// The folders to read, and the files asked for in them, once standard input
// stands for one.
struct CheckCommand::Input {
    std::string preinitDir;
    std::string profileDir;
    std::vector<std::string> files;
    std::unique_ptr<StdinOverlay> overlay; // null unless a file stands on standard input

    std::string nameOf(std::string const& path) const {
        return overlay == nullptr ? path : overlay->original(path);
    }
};

CheckCommand::Input CheckCommand::input() const {
    Input input{device_.preinitDir(), device_.profileDir(), files_, nullptr};
    if (stdinFilename_.empty())
        return input;
    input.overlay = std::make_unique<StdinOverlay>(input.preinitDir, input.profileDir,
                                                   stdinFilename_, readStandardInput());
    // The file itself may be named beside its new text.
    std::erase_if(input.files, [this](std::string const& file) {
        std::error_code ignored;
        return file == standardInput || std::filesystem::equivalent(file, stdinFilename_, ignored);
    });
    input.files.insert(input.files.end(), input.overlay->files().begin(),
                       input.overlay->files().end());
    input.preinitDir = input.overlay->preinitDir();
    input.profileDir = input.overlay->profileDir();
    return input;
}

Report CheckCommand::run(bool colour) const {
    bool const readsInput = std::find(files_.begin(), files_.end(), standardInput) != files_.end();
    if (readsInput && stdinFilename_.empty())
        return failure("'-' needs --stdin-filename");
    if (!readsInput && !stdinFilename_.empty())
        return failure("--stdin-filename needs '-'");
    try {
        return batch_.isGiven() ? checkEach(colour) : checkDevice(colour);
    } catch (std::runtime_error const& error) {
        return failure(error.what());
    }
}

Report CheckCommand::checkDevice(bool colour) const {
    auto const baseline =
        baseline_.empty() ? std::nullopt : std::optional(Baseline::read(baseline_));
    auto const input = this->input();
    auto const parser = DeviceOptions::parserOf(input.preinitDir, input.profileDir);
    parser->staticCheckIs(true);
    if (auto const what = unreadableFolder(parser->device()))
        return failure(input.nameOf(*what));
    auto result = resultOf(*parser, input);
    if (!writeBaseline_.empty())
        return keep(result);
    if (baseline)
        baseline->apply(result, [this](Baseline::Entry const& entry, std::string const&) {
            auto const* const rule = KeldaDatabase::ruleNamed(entry.rule);
            return files_.empty() && (rule == nullptr || selection_.holds(rule->id));
        });
    leaveOutIfQuiet(result);
    return reportOf(result, colour);
}

Report CheckCommand::checkEach(bool colour) const {
    CheckBatch batch(format_, {colour, outputIsTerminal()});
    return askEachCounted(
        batch_,
        [this, &batch](std::string const& device) {
            return batch.answerOf(device, resultOfDevice(device));
        },
        batch.around(), [&batch](BatchTotals const& totals) { return batch.end(totals); });
}

// Without a display of progress: that is of all devices.
CheckResult CheckCommand::resultOfDevice(std::string const& device) const {
    auto const folders = foldersOf(device);
    KeldaDatabase::DatabaseMountFileInfo parser(folders.preinitDir, folders.profileDir);
    parser.staticCheckIs(true);
    if (auto const what = unreadableFolder(parser.device()))
        throw std::runtime_error(*what);
    auto result = resultOf(parser, {folders.preinitDir, folders.profileDir, {}, nullptr});
    leaveOutIfQuiet(result);
    return result;
}

void CheckCommand::leaveOutIfQuiet(CheckResult& result) const {
    if (quiet_)
        std::erase_if(result.findings, [](CheckedFinding const& finding) {
            return finding.severity != Severity::error;
        });
}

Report CheckCommand::keep(CheckResult const& result) const {
    writeWholeFile(writeBaseline_, baselineText(result, writeBaseline_));
    return {"",
            fmt::format("kelda check: {} written to {}\n",
                        counted(result.findings.size(), "finding"), printable(writeBaseline_)),
            ExitStatus::success};
}

// The findings that are asked for.
CheckResult CheckCommand::resultOf(KeldaDatabase::DatabaseMountFileInfo& parser,
                                   Input const& input) const {
    auto const& device = parser.device();
    CheckedFiles files(input.files);
    if (auto const problem = files.problem(device))
        throw std::runtime_error(input.nameOf(*problem));
    auto const left =
        KeldaDatabase::suppress(device, parser.takeFindings(), [this](KeldaDatabase::RuleId rule) {
            return selection_.holds(rule);
        });
    CheckResolution resolution(device,
                               [&input](std::string const& path) { return input.nameOf(path); });
    auto result = resolution.emptyResult();
    result.suppressed = left.suppressed;
    if (!verbose_ && format_ != "junit") {
        result.filesRead.clear();
        result.filesSkipped.clear();
    }
    for (auto const& finding : left.findings) {
        auto const severity = severityOf(finding);
        if (!selection_.holds(finding.rule) || !files.hold(finding.place.file) ||
            (quiet_ && severity != Severity::error && baseline_.empty()))
            continue;
        result.findings.push_back(resolution.resolved(finding));
        result.findings.back().severity = severity;
    }
    return result;
}

Severity CheckCommand::severityOf(KeldaDatabase::Finding const& finding) const {
    return warningsAreErrors_ && finding.severity == Severity::warning ? Severity::error
                                                                       : finding.severity;
}

Report CheckCommand::reportOf(CheckResult const& result, bool colour) const {
    auto const status =
        result.count(Severity::error) == 0 ? ExitStatus::success : ExitStatus::failure;
    if (format_ == "text")
        return {checkText(result, {colour, outputIsTerminal()}), "", status};
    return {formatters.at(format_)(result), "", status};
}

} // namespace KeldaTool
