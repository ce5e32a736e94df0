#include "WhoCommand.h"

#include <CLI/CLI.hpp>

namespace KeldaTool {
namespace {

constexpr char const* description = "Say which agents mount a path.";

} // namespace

CLI::App& WhoCommand::addTo(CLI::App& program) {
    auto& command = *program.add_subcommand("who", description);
    device_.addTo(command);
    return command;
}

Report WhoCommand::run(bool /*colour*/) const {
    return {};
}

} // namespace KeldaTool
