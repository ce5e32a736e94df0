#include "FmtCommand.h"

#include <CLI/CLI.hpp>

namespace KeldaTool {

CLI::App& FmtCommand::addTo(CLI::App& program) {
    return *program.add_subcommand("fmt", "fmt");
}

Report FmtCommand::run(bool /*colour*/) const {
    return {};
}

} // namespace KeldaTool
