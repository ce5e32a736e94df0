#include "ExplainCommand.h"

#include <CLI/CLI.hpp>

namespace KeldaTool {
namespace {

constexpr char const* description = "Say where a mount comes from.";

} // namespace

CLI::App& ExplainCommand::addTo(CLI::App& program) {
    auto& command = *program.add_subcommand("explain", description);
    device_.addTo(command);
    return command;
}

Report ExplainCommand::run(bool /*colour*/) const {
    return {};
}

} // namespace KeldaTool
