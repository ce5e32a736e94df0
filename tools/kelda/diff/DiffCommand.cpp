#include "DiffCommand.h"

#include <CLI/CLI.hpp>

namespace KeldaTool {

CLI::App& DiffCommand::addTo(CLI::App& program) {
    return *program.add_subcommand("diff", "diff");
}

Report DiffCommand::run(bool /*colour*/) const {
    return {};
}

} // namespace KeldaTool
