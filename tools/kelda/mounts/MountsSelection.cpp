#include "mounts/MountsSelection.h"

#include <CLI/CLI.hpp>

#include "Values.h"

namespace KeldaTool {
namespace {

CLI::Option& addOption(CLI::App& command, MountsSelection& selection, MountsSelection::By by,
                       char const* name, char const* type, char const* description) {
    auto const take = [&selection, by](std::string const& value) {
        selection.by = by;
        selection.name = value;
    };
    auto* const option = command.add_option_function<std::string>(name, take, description);
    option->type_name(type);
    return *option;
}

} // namespace

void addSelectionOptions(CLI::App& command, MountsSelection& selection) {
    using By = MountsSelection::By;
    auto& path = addOption(command, selection, By::path, "--path", "PATH",
                           "Only the mount of this path, without a '/' at its front");
    auto& file = addOption(command, selection, By::file, "--file", "PROFILE",
                           "Only the mounts of this profile file; a name that\n"
                           "ends in '*' stands for all files that begin alike");
    auto* const withIncludes =
        command.add_flag("--with-includes", selection.withIncludes,
                         "With --file: also the mounts of the files it includes");
    auto& group = addOption(command, selection, By::group, "--group", "GROUP",
                            "Only the mounts of this mount group, by its name in\n"
                            "the table, such as FanTray::default");
    mustBeRelativePath(path);
    mustNotBeEmpty(file);
    mustNotBeEmpty(group);
    withIncludes->needs(&file);
    path.excludes(&file)->excludes(&group);
    file.excludes(&group);
}

} // namespace KeldaTool
