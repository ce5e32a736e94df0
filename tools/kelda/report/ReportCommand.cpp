#include "ReportCommand.h"

#include <CLI/CLI.hpp>

namespace KeldaTool {

CLI::App& ReportCommand::addTo(CLI::App& program) {
    return *program.add_subcommand("report", "report");
}

Report ReportCommand::run(bool /*colour*/) const {
    return {};
}

} // namespace KeldaTool
