#include "report/ReportCommand.h"

#include <stdexcept>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "FileOutput.h"
#include "Text.h"
#include "UnreadableFolder.h"
#include "Values.h"
#include "report/ReportData.h"
#include "report/ReportPage.h"

namespace KeldaTool {
namespace {

constexpr char const* description =
    "Write a web page about a device.\n"
    "\n"
    "The page is a single file that needs no server and loads nothing: it can be opened from a\n"
    "disk, sent by mail or kept with a build. It shows the agents, the paths, who mounts which of\n"
    "them by which lines, and the findings of 'kelda check', and searches them.\n"
    "\n"
    "The same files give the same page, byte for byte. It holds the lines of the files that mount\n"
    "something, so it is as confidential as they are.";

constexpr char const* footer = "Exit status:\n"
                               "  0  The page was written, whatever is found in the files.\n"
                               "  1  The page could not be written.\n"
                               "  2  The call was wrong, or a folder could not be opened.\n"
                               "\n"
                               "Examples:\n"
                               "  kelda report -o device.html --preinit ./preinit --profiles "
                               "./profiles\n"
                               "  kelda report -o image-7.html --title 'Image 7' --root ./image";

constexpr char const* standardOutput = "-";

} // namespace

CLI::App& ReportCommand::addTo(CLI::App& program) {
    auto& command = *program.add_subcommand("report", description);
    auto* const output =
        command.add_option("-o,--output", output_, "File to write; '-' is standard output");
    mustNotBeEmpty(*output->required()->type_name("FILE"));
    auto* const title = command.add_option("--title", title_, "Title of the page");
    mustNotBeEmpty(*title->type_name("TEXT")->capture_default_str());
    device_.addTo(command);
    command.footer(footer);
    return command;
}

Report ReportCommand::run(bool /*colour*/) const {
    auto const parser = device_.parser();
    parser->staticCheckIs(true);
    if (auto report = unreadableFolderReport(parser->device(), Format::table))
        return *report;
    auto const data = reportData(*parser);
    return write(reportPage(builtInPage(), title_, data.document),
                 fmt::format("{}, {}, {}", counted(data.agents, "agent"),
                             counted(data.paths, "path"), counted(data.findings, "finding")));
}

Report ReportCommand::write(std::string const& page, std::string const& totals) const {
    if (output_ == standardOutput)
        return {page, "", ExitStatus::success};
    try {
        writeWholeFile(output_, page);
    } catch (std::runtime_error const& error) {
        return {"", fmt::format("kelda report: {}\n", error.what()), ExitStatus::failure};
    }
    return {"", fmt::format("report written to {}: {}\n", printable(output_), totals),
            ExitStatus::success};
}

} // namespace KeldaTool
