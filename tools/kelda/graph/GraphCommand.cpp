#include "GraphCommand.h"

#include <CLI/CLI.hpp>

namespace KeldaTool {

CLI::App& GraphCommand::addTo(CLI::App& program) {
    return *program.add_subcommand("graph", "graph");
}

Report GraphCommand::run(bool /*colour*/) const {
    return {};
}

} // namespace KeldaTool
