#include "diff/DiffCommand.h"

#include <filesystem>
#include <memory>
#include <stdexcept>

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <fmt/ranges.h>

#include "DeviceOptions.h"
#include "Text.h"
#include "UnreadableFolder.h"
#include "Values.h"
#include "devices/DeviceTree.h"
#include "diff/AskedAgents.h"
#include "diff/DiffBatch.h"
#include "diff/DiffFormats.h"

namespace KeldaTool {
namespace {

using KeldaDatabase::ChangeClass;
using KeldaDatabase::DatabaseMountFileInfo;

constexpr char const* description =
    "Show what a change of files means to the agents.\n"
    "\n"
    "OLD and NEW are devices: folders with 'preinit' and 'profiles' in them, or images with the\n"
    "default folders below them. What only moves, or changes in layout and comments, is no\n"
    "difference. Each change has a class, and is shown once with all agents that it concerns and\n"
    "with the lines that brought it about:\n"
    "  dangerous  agents may not start, or lack what they had\n"
    "  risky      agents may act otherwise, or write what they did not write\n"
    "  notable    agents get more than they had, and only read it\n"
    "  harmless   no agent loses anything, or does anything that it did not do\n"
    "\n"
    "--device and --devices compare many devices: the folders DIR in OLD with those in NEW.";

constexpr char const* footer =
    "Exit status:\n"
    "  0  The devices were compared. That they differ is no failure without --fail-on.\n"
    "  1  There is a change of the class of --fail-on or above, --agent names an agent that\n"
    "     neither device has, or the answer could not be written.\n"
    "  2  The call was wrong, or a folder could not be opened.\n"
    "Of many devices the worst counts: 2, then 1, then 0.\n"
    "\n"
    "Examples:\n"
    "  kelda diff released/device device\n"
    "  kelda diff released/device device --fail-on dangerous --format markdown > comment.md\n"
    "  kelda diff released/device device --agent FanTray-2 --agent 'Port*'\n"
    "  kelda diff released images --devices images.txt --class risky";

bool isJson(std::string_view format) {
    return format == "json" || format == "jsonl";
}

void addClassOption(CLI::App& command, char const* name, std::string& value, char const* meaning) {
    mustBeOneOf(*command.add_option(name, value, meaning),
                {"harmless", "notable", "risky", "dangerous"});
}

void addFolder(CLI::App& command, char const* name, std::string& folder, char const* meaning) {
    auto* const option = command.add_option(name, folder, meaning);
    mustNotBeEmpty(*option->type_name("DIR")->required());
}

// Whether there is a change of this class, or of a worse one.
bool reaches(KeldaDatabase::Difference const& difference, std::string const& severity) {
    auto const worst = difference.worst();
    return !severity.empty() && worst && *worst >= *KeldaDatabase::changeClassNamed(severity);
}

DeviceFolders foldersFor(std::string const& device) {
    std::error_code ignored;
    auto const status = std::filesystem::status(device, ignored);
    if (exists(status) && !is_directory(status))
        throw std::runtime_error(fmt::format("{} is no folder", device));
    return foldersOf(device);
}

std::unique_ptr<DatabaseMountFileInfo> parserOf(DeviceFolders const& folders, bool showsProgress) {
    auto parser = showsProgress ? DeviceOptions::parserOf(folders.preinitDir, folders.profileDir)
                                : std::make_unique<DatabaseMountFileInfo>(folders.preinitDir,
                                                                          folders.profileDir);
    parser->numberedTokensIs(true);
    if (auto const what = unreadableFolder(parser->device()))
        throw std::runtime_error(*what);
    return parser;
}

// A word on faults: an agent that ends at one is told of as far as it gets.
std::string faultText(DatabaseMountFileInfo& parser, std::string const& device) {
    if (parser.device().faults.empty())
        return {};
    return fmt::format("kelda: note: {} in the files of {}; see 'kelda check'\n",
                       counted(parser.findings().size(), "fault"), printable(device));
}

std::string unknownText(std::vector<std::string> const& agents, std::string const& before,
                        std::string const& after) {
    std::string text;
    for (auto const& agent : agents)
        text += fmt::format("kelda: no agent '{}' is in {} or {}\n", printable(agent),
                            printable(before), printable(after));
    return text;
}

} // namespace

struct DiffCommand::Comparison {
    DiffResult result;
    std::string messages;
    ExitStatus status = ExitStatus::success;
};

CLI::App& DiffCommand::addTo(CLI::App& program) {
    auto& command = *program.add_subcommand("diff", description);
    addFolder(command, "OLD", old_, "Device as it was");
    addFolder(command, "NEW", new_, "Device as it is to be");
    auto* const format = command.add_option("--format", format_, "How to print the changes");
    mustBeOneOf(*format, {"text", "json", "jsonl", "markdown"});
    format->default_str("text");
    addClassOption(command, "--fail-on", failOn_,
                   "Exit with status 1 for a change of this class or above");
    addClassOption(command, "--class", class_, "Show only changes of this class or above");
    auto* const agents = command.add_option(
        "--agent", agents_,
        "Only changes for this agent; repeatable. A name such as FanTray-%tray,\n"
        "an agent string such as FanTray-2, or a prefix such as 'Fan*'");
    mustNotBeEmpty(*agents->type_name("NAME")->expected(1)->take_all());
    command.add_flag("-v,--verbose", verbose_, "Show also what only follows from other changes");
    batch_.addTo(command, "Compare the folders of this name in OLD and NEW; repeatable");
    command.footer(footer);
    return command;
}

std::string DiffCommand::wrongCallResults(std::vector<std::string> const& words,
                                          std::string const& what) const {
    constexpr std::string_view option = "--format";
    for (std::size_t i = 0; i < words.size(); ++i) {
        std::string_view const word = words[i];
        auto const format = word == option && i + 1 < words.size() ? std::string_view(words[i + 1])
                            : word.starts_with("--format=")        ? word.substr(option.size() + 1)
                                                                   : std::string_view();
        if (isJson(format))
            return format == "json" ? diffErrorJson("", what)
                                    : diffInOneLine(diffErrorJson("", what));
    }
    return {};
}

Report DiffCommand::failure(std::string const& what) const {
    auto const document = diffErrorJson("", what);
    return {format_ == "json"    ? document
            : format_ == "jsonl" ? diffInOneLine(document)
                                 : std::string(),
            fmt::format("kelda diff: {}\n", printable(what)), ExitStatus::wrongCall};
}

Report DiffCommand::run(bool colour) const {
    try {
        return batch_.isGiven() ? compareEach(colour) : compareDevice(colour);
    } catch (std::runtime_error const& error) {
        return failure(error.what());
    }
}

DiffCommand::Comparison DiffCommand::comparisonOf(std::string const& before,
                                                  std::string const& after,
                                                  bool showsProgress) const {
    Comparison comparison;
    auto& result = comparison.result;
    result.before = foldersFor(before);
    result.after = foldersFor(after);
    auto const oldParser = parserOf(result.before, showsProgress);
    auto const newParser = parserOf(result.after, showsProgress);
    result.difference = differenceOf(*oldParser, *newParser);
    AskedAgents agents(agents_);
    agents.lookIn(oldParser->device());
    agents.lookIn(newParser->device());
    agents.keepIn(result.difference);
    comparison.messages = faultText(*oldParser, before) + faultText(*newParser, after) +
                          unknownText(agents.unknown(), before, after);
    if (reaches(result.difference, failOn_) || !agents.unknown().empty())
        comparison.status = ExitStatus::failure;
    leaveOut(result, KeldaDatabase::changeClassNamed(class_).value_or(ChangeClass::harmless),
             verbose_);
    return comparison;
}

Report DiffCommand::compareDevice(bool colour) const {
    auto const [result, messages, status] = comparisonOf(old_, new_, true);
    if (isJson(format_)) {
        auto const document = diffJson(result);
        return {format_ == "json" ? document : diffInOneLine(document), messages, status};
    }
    return {format_ == "markdown" ? diffMarkdown(result) : diffText(result, colour), messages,
            status};
}

// Without a display of progress: that is of all devices.
Report DiffCommand::compareEach(bool colour) const {
    DiffBatch const batch(format_, colour);
    return askEachCounted(
        batch_,
        [this, &batch](std::string const& device) {
            auto comparison = comparisonOf(fmt::format("{}/{}", old_, device),
                                           fmt::format("{}/{}", new_, device), false);
            comparison.result.device = device;
            auto answer = batch.answerOf(comparison.result);
            answer.report.messages = std::move(comparison.messages);
            answer.report.status = comparison.status;
            return answer;
        },
        batch.around(), [&batch](BatchTotals const& totals) { return batch.end(totals); });
}

} // namespace KeldaTool
