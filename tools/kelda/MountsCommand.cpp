#include "MountsCommand.h"

#include <CLI/CLI.hpp>
#include <KeldaBase/AgentMountFileInfo.h>
#include <fmt/format.h>

#include "LoadFault.h"
#include "MountsAnswer.h"
#include "MountsDocument.h"
#include "MountsTable.h"
#include "Text.h"

namespace KeldaTool {
namespace {

constexpr char const* description =
    "Show what the mount profiles give one agent.\n"
    "\n"
    "Every path that the agent mounts is shown with its type and flags, with the mount groups\n"
    "and profile files that name it (explicit) or with none (intermediate: it only exists above\n"
    "others), then what holds for the agent as a whole. It is no error that an agent has no\n"
    "profile; a table then comes with a note on standard error.";

constexpr char const* footer =
    "Exit status:\n"
    "  0  The answer was printed. No profile for the agent is an answer too.\n"
    "  1  A file could not be loaded, or the answer could not be written.\n"
    "  2  The call was wrong.\n"
    "\n"
    "Example:\n"
    "  kelda mounts FanTray-2 --override FanTray-spare --format json";

std::string refuseEmpty(std::string const& agent) {
    return agent.empty() ? "must not be empty" : "";
}

// Programs read from the document that no profile was found; people are told.
std::string noteOf(MountsAnswer const& answer) {
    if (answer.foundMountProfile)
        return "";
    return fmt::format("kelda: note: no mount profile is for agent '{}'\n",
                       printable(answer.agent));
}

Report reportOf(MountsAnswer const& answer, Format format, bool colour) {
    if (format == Format::json)
        return {documentText(mountsDocument(answer)), "", ExitStatus::success};
    return {mountsTable(answer, colour), noteOf(answer), ExitStatus::success};
}

} // namespace

CLI::App& MountsCommand::addTo(CLI::App& program) {
    auto& command = *program.add_subcommand("mounts", description);
    command.add_option("AGENT", agent_, "Agent string, such as FanTray-2")
        ->required()
        ->check(CLI::Validator(refuseEmpty, ""));
    command
        .add_option("--override", override_,
                    "What %agentString stands for in the profiles\n(default: AGENT)")
        ->type_name("NAME");
    addPreinitOption(command, preinitDir_);
    addProfilesOption(command, profileDir_);
    addFormatOption(command, format_);
    command.footer(footer);
    return command;
}

Report MountsCommand::run(bool colour) const {
    Kelda::AgentMountFileInfo parser(false, preinitDir_, profileDir_, true, "DefaultMountGroup");
    parser.addAgent(agent_, override_);
    try {
        return reportOf(askMounts(parser, agent_), format_, colour);
    } catch (Fen::AgentException const& thrown) {
        return faultReport(lastFault(parser, thrown), format_);
    }
}

} // namespace KeldaTool
