// How help texts look.
#pragma once

#include <string>

#include <CLI/CLI.hpp>

namespace KeldaTool {

class HelpFormatter : public CLI::Formatter {
  public:
    HelpFormatter();

    /// A command in the list of commands: its name and the first line of its description.
    std::string make_subcommand(CLI::App const* command) const override;
    std::string make_usage(CLI::App const* app, std::string name) const override;
    /// The option's argument, without the remarks that the base class adds.
    std::string make_option_opts(CLI::Option const* option) const override;
    /// The description and, if there is one, the default.
    std::string make_option_desc(CLI::Option const* option) const override;
};

} // namespace KeldaTool
