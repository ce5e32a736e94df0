#include "graph/GraphCommand.h"

#include <CLI/CLI.hpp>

#include "FaultNote.h"
#include "UnreadableFolder.h"
#include "Values.h"
#include "graph/GraphDrawings.h"
#include "graph/GraphNames.h"

namespace KeldaTool {
namespace {

constexpr char const* description =
    "Draw agents and the paths between them.\n"
    "\n"
    "Shown are the paths that one agent writes and another one reads, with all agents that do.\n"
    "Arrows go from those that write to those that only read; an arrow with two heads is for\n"
    "an agent that does both. The letters are the flags of the mount.\n"
    "\n"
    "In the paths of profiles, '*' stands for the value of a token and of %agentString. An agent\n"
    "with fan/* has fan/1 as well, if somebody mounts that. Where there are more than 40 paths,\n"
    "those that the same agents have with the same flags are drawn as one; where there are more\n"
    "than 40 agents, so are those with the same paths. Their tooltip lists them all.";

constexpr char const* footer =
    "Exit status:\n"
    "  0  The graph was printed.\n"
    "  1  There is no such agent, no path is between agents, or the graph could not be written.\n"
    "  2  The call was wrong, or a folder could not be opened.\n"
    "\n"
    "Examples:\n"
    "  kelda graph --format svg > device.svg\n"
    "  kelda graph Thermal 'Fan*' --format svg > cooling.svg\n"
    "  kelda graph --path 'hardware/**' --all-paths | dot -Tpng > hardware.png";

// Of which nodes of a kind there are more, they are put together.
constexpr std::size_t mostSingleNodes = 40;

Report failed(std::string messages) {
    return {"", std::move(messages), ExitStatus::failure};
}

} // namespace

CLI::App& GraphCommand::addTo(CLI::App& program) {
    auto& command = *program.add_subcommand("graph", description);
    mustNotBeEmpty(*command.add_option("AGENT", question_.agents,
                                       "Agents whose paths to show: a name, an agent string, or a\n"
                                       "text with '*' such as 'Fan*'\n(default: all)"));
    auto* const paths = command.add_option(
        "--path", question_.paths, "Only these paths, of which PATTERN may stand for several");
    paths->type_name("PATTERN")->allow_extra_args(false);
    mustBeRelativePath(*paths);
    command.add_flag("--all-paths", question_.allPaths,
                     "Also paths that nobody writes, or nobody else reads");
    device_.addTo(command);
    auto const take = [this](std::string const& name) {
        drawing_ = name == "svg" ? Drawing::svg : Drawing::dot;
    };
    auto* const format = command.add_option_function<std::string>(
        "--format", take, "What to print: a graph for Graphviz, or a picture");
    mustBeOneOf(*format, {"dot", "svg"});
    format->default_str("dot");
    command.footer(footer);
    return command;
}

Report GraphCommand::run(bool /*colour*/) const {
    auto const parser = device_.parser();
    auto const& device = parser->device();
    if (auto report = unreadableFolderReport(device, Format::table))
        return *report;
    auto const faults = faultNote(*parser);
    if (auto const unknown = unknownAgents(device, question_); !unknown.empty())
        return failed(unknown + faults);
    auto const graph = pathGraph(device, question_);
    if (graph.paths.empty())
        return failed(nothingBetween(question_, graph) + faults);
    auto const drawn = grouped(graph, mostSingleNodes);
    return {drawing_ == Drawing::svg ? svgOf(drawn) : dotOf(drawn), faults, ExitStatus::success};
}

} // namespace KeldaTool
