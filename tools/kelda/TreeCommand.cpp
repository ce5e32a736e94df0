#include "TreeCommand.h"

#include <CLI/CLI.hpp>

namespace KeldaTool {
namespace {

constexpr char const* description = "Show the tree of paths.";

} // namespace

CLI::App& TreeCommand::addTo(CLI::App& program) {
    auto& command = *program.add_subcommand("tree", description);
    device_.addTo(command);
    return command;
}

Report TreeCommand::run(bool /*colour*/) const {
    return {};
}

} // namespace KeldaTool
