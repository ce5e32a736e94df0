#include "agents/AgentsCommand.h"

#include <CLI/CLI.hpp>

#include "FaultNote.h"
#include "UnreadableFolder.h"
#include "agents/AgentsAnswer.h"

namespace KeldaTool {
namespace {

constexpr char const* description =
    "Show the agents that the profiles name.\n"
    "\n"
    "Each agent is shown as its profile names it, with how many profiles it loads (default groups\n"
    "counted, included files not), how many paths it mounts and writes and in how many groups,\n"
    "whether it is an active-mount agent, how many faults it meets when it loads, and its\n"
    "sub-agents.";

constexpr char const* footer = "Exit status:\n"
                               "  0  The answer was printed.\n"
                               "  1  The answer could not be written.\n"
                               "  2  The call was wrong, or a folder could not be opened.\n"
                               "\n"
                               "Example:\n"
                               "  kelda agents --preinit ./preinit --profiles ./profiles";

} // namespace

CLI::App& AgentsCommand::addTo(CLI::App& program) {
    auto& command = *program.add_subcommand("agents", description);
    device_.addTo(command);
    addFormatOption(command, format_);
    command.footer(footer);
    return command;
}

Report AgentsCommand::run(bool colour) const {
    auto const parser = device_.parser();
    auto const& device = parser->device();
    if (auto report = unreadableFolderReport(device, format_))
        return *report;
    auto const answer = askAgents(device);
    return {format_ == Format::json ? agentsDocument(answer) : agentsTable(answer, colour),
            faultNote(*parser), ExitStatus::success};
}

} // namespace KeldaTool
