#include "mounts/MountsCommand.h"

#include <CLI/CLI.hpp>
#include <KeldaBase/AgentMountFileInfoWrap.h>
#include <fmt/format.h>

#include "LoadFault.h"
#include "Text.h"
#include "Values.h"
#include "mounts/MountsAnswer.h"
#include "mounts/MountsDocument.h"
#include "mounts/MountsTable.h"

namespace KeldaTool {
namespace {

constexpr char const* description =
    "Show what the mount profiles give one agent.\n"
    "\n"
    "Every path that the agent mounts is shown with its type and flags, with the mount groups\n"
    "and profile files that name it (explicit) or with none (intermediate: it only exists above\n"
    "others), then what holds for the agent as a whole. It is no error that an agent has no\n"
    "profile; a table then comes with a note on standard error.\n"
    "\n"
    "One of --path, --file and --group narrows the answer to the mounts that it names.";

constexpr char const* footer =
    "Exit status:\n"
    "  0  The answer was printed. No profile for the agent is an answer too.\n"
    "  1  A file could not be loaded, the agent has no such path, file or group, or the\n"
    "     answer could not be written.\n"
    "  2  The call was wrong.\n"
    "\n"
    "Examples:\n"
    "  kelda mounts FanTray-2 --override FanTray-spare --format json\n"
    "  kelda mounts FanTray-2 --file FanTray --with-includes\n"
    "  kelda mounts FanTray-2 --group FanTray::default";

// Programs read from the document that no profile was found; people are told.
std::string noteOf(MountsAnswer const& answer) {
    if (answer.foundMountProfile)
        return "";
    return fmt::format("kelda: note: no mount profile is for agent '{}'\n",
                       printable(answer.agent));
}

} // namespace

CLI::App& MountsCommand::addTo(CLI::App& program) {
    auto& command = *program.add_subcommand("mounts", description);
    auto* const agent = command.add_option("AGENT", agent_, "Agent string, such as FanTray-2");
    mustNotBeEmpty(*agent->required());
    command
        .add_option("--override", override_,
                    "What %agentString stands for in the profiles\n(default: AGENT)")
        ->type_name("NAME");
    addSelectionOptions(command, selection_);
    addPreinitOption(command, preinitDir_);
    addProfilesOption(command, profileDir_);
    addFormatOption(command, format_);
    command.footer(footer);
    return command;
}

Report MountsCommand::run(bool colour) const {
    auto const entity = Kelda::agentMountFileInfoWrapFactory(false, agent_, override_, preinitDir_,
                                                             profileDir_, true);
    try {
        auto const answer = askMounts(*entity, agent_, selection_);
        if (format_ == Format::json)
            return {documentText(mountsDocument(answer, selection_)), "", ExitStatus::success};
        return {mountsTable(answer, selection_, colour), noteOf(answer), ExitStatus::success};
    } catch (Fen::AgentException const& thrown) {
        return faultReport(lastFault(*entity->mountFileInfoPtr(), thrown), format_);
    }
}

} // namespace KeldaTool
