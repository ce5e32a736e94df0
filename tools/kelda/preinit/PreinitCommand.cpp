#include "preinit/PreinitCommand.h"

#include <CLI/CLI.hpp>

#include "LoadFault.h"
#include "preinit/PreinitAnswer.h"
#include "preinit/PreinitEntity.h"

namespace KeldaTool {
namespace {

constexpr char const* description =
    "Show what the preinit files declare.\n"
    "\n"
    "Every path is shown with its type and attribute, and whether it is a config path. JSON also\n"
    "tells the type of every wildcard path, those given to ancestors included.";

constexpr char const* footer =
    "Exit status:\n"
    "  0  The answer was printed.\n"
    "  1  A file could not be loaded, or the answer could not be written.\n"
    "  2  The call was wrong.\n"
    "\n"
    "Example:\n"
    "  kelda preinit --preinit ./preinit --format json";

} // namespace

CLI::App& PreinitCommand::addTo(CLI::App& program) {
    auto& command = *program.add_subcommand("preinit", description);
    addPreinitOption(command, preinitDir_);
    addFormatOption(command, format_);
    command.footer(footer);
    return command;
}

Report PreinitCommand::run(bool colour) const {
    auto const entity = preinitEntity(preinitDir_);
    try {
        auto const answer = askPreinit(*entity);
        return {format_ == Format::json ? documentText(preinitDocument(answer))
                                        : preinitTable(answer, colour),
                "", ExitStatus::success};
    } catch (Fen::AgentException const& thrown) {
        return faultReport(lastFault(*entity->mountFileInfoPtr(), thrown), format_);
    }
}

} // namespace KeldaTool
