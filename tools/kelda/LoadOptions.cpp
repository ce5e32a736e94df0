#include "LoadOptions.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

namespace KeldaTool {
namespace {

constexpr char const* defaultPreinitDir = "/usr/lib64/preinit";
constexpr char const* defaultProfileDir = "/usr/lib64/KeldaMountProfiles";

void addDirectoryOption(CLI::App& command, char const* name, std::string& directory,
                        char const* defaultDir, char const* description) {
    directory = defaultDir;
    command.add_option(name, directory, description)->type_name("DIR")->capture_default_str();
}

std::string refuseUnknownFormat(std::string const& name) {
    bool const isKnown = name == "table" || name == "json";
    return isKnown ? std::string() : fmt::format("must be table or json, not '{}'", name);
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
    command
        .add_option_function<std::string>("--format", take, "How to print: for people or as JSON")
        ->check(CLI::Validator(refuseUnknownFormat, ""))
        ->type_name("table|json")
        ->default_str("table");
}

} // namespace KeldaTool
