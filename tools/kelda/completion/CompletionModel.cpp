#include "completion/CompletionModel.h"

#include <algorithm>

#include <CLI/CLI.hpp>

namespace KeldaTool {
namespace {

std::string firstLine(std::string const& text) {
    return text.substr(0, text.find('\n'));
}

std::string inOneLine(std::string text) {
    std::replace(text.begin(), text.end(), '\n', ' ');
    return text;
}

// The kind is read off the name that the help shows for the value.
CompletionValue valueOf(CLI::Option const& option) {
    CompletionValue value;
    auto const type = option.get_type_name();
    value.name = option.get_positional() ? option.get_name(true) : type;
    if (type == "DIR")
        value.kind = CompletionValue::Kind::directory;
    else if (type == "FILE")
        value.kind = CompletionValue::Kind::file;
    else if (type.find('|') != std::string::npos) {
        value.kind = CompletionValue::Kind::word;
        value.words = CLI::detail::split(type, '|');
    }
    return value;
}

std::vector<std::string> namesOf(CLI::Option const& option) {
    std::vector<std::string> names;
    for (auto const& name : option.get_snames())
        names.push_back("-" + name);
    for (auto const& name : option.get_lnames())
        names.push_back("--" + name);
    return names;
}

using Options = std::vector<CLI::Option const*>;

// In the order of their definitions; those of option groups, which are commands without a name,
// behind the command's own.
Options optionsOf(CLI::App const& command) {
    auto options =
        command.get_options([](CLI::Option const* option) { return !option->get_group().empty(); });
    for (auto const* part : command.get_subcommands({})) {
        if (!part->get_name().empty())
            continue;
        auto more = optionsOf(*part);
        std::erase(more, part->get_help_ptr()); // which the command has itself
        options.insert(options.end(), more.begin(), more.end());
    }
    return options;
}

std::vector<std::string> ruledOutBy(CLI::Option const& option, Options const& all) {
    auto const excluded = option.get_excludes(); // in the order of their addresses
    std::vector<std::string> names;
    for (auto const* other : all)
        if (std::find(excluded.begin(), excluded.end(), other) != excluded.end()) {
            auto const more = namesOf(*other);
            names.insert(names.end(), more.begin(), more.end());
        }
    return names;
}

CompletionOption modelOf(CLI::Option const& option, Options const& all) {
    CompletionOption model;
    model.names = namesOf(option);
    model.description = inOneLine(option.get_description());
    if (option.get_items_expected_max() > 0)
        model.value = valueOf(option);
    model.isRepeatable = option.get_expected_max() > 1;
    model.rulesOut = ruledOutBy(option, all);
    return model;
}

} // namespace

CompletionModel completionModel(CLI::App const& program) {
    CompletionModel model{program.get_name(), firstLine(program.get_description()), {}, {}, {}};
    auto const options = optionsOf(program);
    for (auto const* option : options)
        if (option->get_positional())
            model.arguments.push_back(
                {valueOf(*option), option->get_required(), option->get_expected_max() > 1});
        else
            model.options.push_back(modelOf(*option, options));
    for (auto const* command : program.get_subcommands({}))
        if (!command->get_name().empty() && !command->get_group().empty())
            model.commands.push_back(completionModel(*command));
    return model;
}

} // namespace KeldaTool
