#include "AgentsCommand.h"

#include <CLI/CLI.hpp>

namespace KeldaTool {
namespace {

constexpr char const* description = "List the agents.";

} // namespace

CLI::App& AgentsCommand::addTo(CLI::App& program) {
    auto& command = *program.add_subcommand("agents", description);
    device_.addTo(command);
    return command;
}

Report AgentsCommand::run(bool /*colour*/) const {
    return {};
}

} // namespace KeldaTool
