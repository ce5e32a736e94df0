#include "CheckCommand.h"

#include <CLI/CLI.hpp>

namespace KeldaTool {
namespace {

constexpr char const* description = "Check every file.";

} // namespace

CLI::App& CheckCommand::addTo(CLI::App& program) {
    auto& command = *program.add_subcommand("check", description);
    device_.addTo(command);
    return command;
}

Report CheckCommand::run(bool /*colour*/) const {
    return {};
}

} // namespace KeldaTool
