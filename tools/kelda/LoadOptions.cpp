#include "LoadOptions.h"

#include <CLI/CLI.hpp>

#include "Values.h"

namespace KeldaTool {
namespace {

// An empty name is refused: the library would take it for the default folder.
void addDirectoryOption(CLI::App& command, char const* name, std::string& directory,
                        char const* defaultDir, char const* description) {
    directory = defaultDir;
    auto* const option = command.add_option(name, directory, description);
    option->type_name("DIR")->capture_default_str();
    mustNotBeEmpty(*option);
}

} // namespace

void addPreinitOption(CLI::App& command, std::string& directory) {
    addDirectoryOption(command, "--preinit", directory, defaultPreinitDir,
                       "Folder with the preinit files");
}

void addProfilesOption(CLI::App& command, std::string& directory) {
    addDirectoryOption(command, "--profiles", directory, defaultProfileDir,
                       "Folder with the mount profiles");
}

void addFormatOption(CLI::App& command, Format& format) {
    auto const take = [&format](std::string const& name) {
        format = name == "json" ? Format::json : Format::table;
    };
    auto* const option = command.add_option_function<std::string>(
        "--format", take, "How to print: for people or as JSON");
    mustBeOneOf(*option, {"table", "json"});
    option->default_str("table");
}

} // namespace KeldaTool
