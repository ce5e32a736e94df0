#include "tree/TreeCommand.h"

#include <algorithm>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "FaultNote.h"
#include "Text.h"
#include "UnreadableFolder.h"
#include "Values.h"
#include "tree/TreeText.h"

namespace KeldaTool {
namespace {

constexpr char const* description =
    "Show the tree of paths.\n"
    "\n"
    "The tree holds the paths that preinit files declare and those that profiles mount, and what\n"
    "is above them. Each is shown with its type and attribute, and with how many agents mount it,\n"
    "read it and write it. Tokens that stand in the same place are one node, called as the first\n"
    "preinit line has it; '*' is a token that only profiles have.";

constexpr char const* footer = "Exit status:\n"
                               "  0  The tree was printed.\n"
                               "  1  There is no path PREFIX, or the answer could not be written.\n"
                               "  2  The call was wrong, or a folder could not be opened.\n"
                               "\n"
                               "Examples:\n"
                               "  kelda tree --depth 2\n"
                               "  kelda tree hardware/fan/tray/%tray --format json";

std::string refuseNoDepth(std::string const& text) {
    bool const isNumber =
        !text.empty() && text.size() <= 4 && text.front() != '0' &&
        std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
    return isNumber ? "" : fmt::format("must be a number from 1 to 9999, not '{}'", text);
}

Report noSuchPath(PathTree const& tree, std::string const& prefix) {
    auto const nearest = tree.nearest(prefix);
    auto const hint = nearest ? fmt::format("; did you mean '{}'?", printable(*nearest)) : "";
    return {"", fmt::format("kelda: there is no path '{}'{}\n", printable(prefix), hint),
            ExitStatus::failure};
}

} // namespace

CLI::App& TreeCommand::addTo(CLI::App& program) {
    auto& command = *program.add_subcommand("tree", description);
    mustBeRelativePath(*command.add_option("PREFIX", prefix_, "Path of which to show the subtree"));
    command
        .add_option("--depth", depth_,
                    "How many levels to show, those below PREFIX\n(default: all)")
        ->type_name("N")
        ->check(CLI::Validator(refuseNoDepth, ""));
    device_.addTo(command);
    addFormatOption(command, format_);
    command.footer(footer);
    return command;
}

Report TreeCommand::run(bool colour) const {
    auto const parser = device_.parser();
    auto const& device = parser->device();
    if (auto report = unreadableFolderReport(device, format_))
        return *report;
    PathTree const tree(device);
    TreeExtract extract{prefix_, std::nullopt, depth_};
    if (!prefix_.empty() && !(extract.node = tree.find(prefix_))) {
        auto report = noSuchPath(tree, prefix_);
        report.messages += faultNote(*parser);
        return report;
    }
    return {format_ == Format::json ? treeDocument(device, tree, extract)
                                    : treeTable(tree, extract, colour),
            faultNote(*parser), ExitStatus::success};
}

} // namespace KeldaTool
