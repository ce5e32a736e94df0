#include "HelpFormatter.h"

#include <sstream>

namespace KeldaTool {

HelpFormatter::HelpFormatter() {
    column_width(26);
    label("Positionals", "Arguments");
}

std::string HelpFormatter::make_subcommand(CLI::App const* command) const {
    auto const description = command->get_description();
    std::ostringstream line;
    CLI::detail::format_help(line, command->get_name(),
                             description.substr(0, description.find('\n')), column_width_);
    return line.str();
}

std::string HelpFormatter::make_usage(CLI::App const* app, std::string name) const {
    if (app->get_parent() == nullptr)
        return "\nUsage: " + name + " COMMAND [ARGUMENTS]\n";
    std::string arguments;
    for (auto const* option : app->get_options())
        if (option->get_positional())
            arguments += " " + make_option_usage(option);
    return "\nUsage: " + name + arguments + " [OPTIONS]\n";
}

std::string HelpFormatter::make_option_opts(CLI::Option const* option) const {
    auto const type = option->get_positional() ? std::string() : option->get_type_name();
    return type.empty() ? type : " " + type;
}

std::string HelpFormatter::make_option_desc(CLI::Option const* option) const {
    auto const text = option->get_default_str();
    return option->get_description() + (text.empty() ? text : "\n(default: " + text + ")");
}

} // namespace KeldaTool
