#include "preinit/ConfigCommand.h"

#include <CLI/CLI.hpp>

#include "LoadFault.h"
#include "preinit/ConfigAnswer.h"
#include "preinit/PreinitEntity.h"

namespace KeldaTool {
namespace {

constexpr char const* description =
    "Show which paths are configuration.\n"
    "\n"
    "Every path that a 'CONFIG:' line of a preinit file declares is shown with its type.";

constexpr char const* footer =
    "Exit status:\n"
    "  0  The answer was printed.\n"
    "  1  A file could not be loaded, or the answer could not be written.\n"
    "  2  The call was wrong.\n"
    "\n"
    "Example:\n"
    "  kelda config --preinit ./preinit --format json";

} // namespace

CLI::App& ConfigCommand::addTo(CLI::App& program) {
    auto& command = *program.add_subcommand("config", description);
    addPreinitOption(command, preinitDir_);
    addFormatOption(command, format_);
    command.footer(footer);
    return command;
}

Report ConfigCommand::run(bool colour) const {
    auto const entity = preinitEntity(preinitDir_);
    try {
        auto const paths = askConfig(*entity);
        return {format_ == Format::json ? documentText(configDocument(paths))
                                        : configTable(paths, colour),
                "", ExitStatus::success};
    } catch (Fen::AgentException const& thrown) {
        return faultReport(lastFault(*entity->mountFileInfoPtr(), thrown), format_);
    }
}

} // namespace KeldaTool
