// The script has a function for every command, each a call of zsh's own _arguments.
#include "completion/ZshCompletion.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "completion/ShellText.h"

namespace KeldaTool {
namespace {

constexpr char const* head = R"script(#compdef kelda
# zsh completion for kelda, printed by 'kelda completion zsh'.
)script";

// As a file of $fpath, the script is the function's first call; sourced, it makes the function
// known.
constexpr char const* foot = R"script(
if [ "$funcstack[1]" = _kelda ]; then
    _kelda "$@"
else
    compdef _kelda kelda
fi
)script";

std::string actionOf(CompletionValue const& value) {
    switch (value.kind) {
    case CompletionValue::Kind::directory:
        return "_files -/";
    case CompletionValue::Kind::file:
        return "_files";
    case CompletionValue::Kind::word:
        return fmt::format("({})", fmt::join(value.words, " "));
    case CompletionValue::Kind::anything:
        break;
    }
    return " "; // only the value's name is shown
}

// ":NAME:ACTION", as it ends the entry of an option or argument.
std::string valueText(CompletionValue const& value) {
    return fmt::format(":{}:{}", escaped(value.name, "\\:"), actionOf(value));
}

// One entry for each name of the option; all of them are ruled out by one another.
std::vector<std::string> entriesOf(CompletionOption const& option) {
    auto ruledOut = option.rulesOut;
    if (!option.isRepeatable)
        ruledOut.insert(ruledOut.end(), option.names.begin(), option.names.end());
    auto const exclusion =
        ruledOut.empty() ? std::string() : fmt::format("({})", fmt::join(ruledOut, " "));
    auto const description = escaped(option.description, "\\[]:");
    std::vector<std::string> entries;
    for (auto const& name : option.names) {
        char const* const joint = !option.value ? "" : name.starts_with("--") ? "=" : "+";
        entries.push_back(fmt::format("{}{}{}{}[{}]{}", option.isRepeatable ? "*" : "", exclusion,
                                      name, joint, description,
                                      option.value ? valueText(*option.value) : ""));
    }
    return entries;
}

std::string entryOf(std::size_t number, CompletionArgument const& argument) {
    auto const place = argument.isRepeatable ? "*" : fmt::format("{}", number);
    bool const isOptional = !argument.isRequired && !argument.isRepeatable;
    return place + (isOptional ? ":" : "") + valueText(argument.value);
}

std::vector<std::string> entriesOf(CompletionModel const& command) {
    std::vector<std::string> entries;
    for (auto const& option : command.options)
        for (auto& entry : entriesOf(option))
            entries.push_back(std::move(entry));
    for (std::size_t i = 0; i < command.arguments.size(); ++i)
        entries.push_back(entryOf(i + 1, command.arguments[i]));
    if (!command.commands.empty()) {
        entries.emplace_back("1: :->command");
        entries.emplace_back("*:: :->rest");
    }
    return entries;
}

std::string callOfArguments(CompletionModel const& command) {
    std::string call = "    _arguments -s -S -C";
    for (auto const& entry : entriesOf(command))
        call += " \\\n        " + shellQuoted(entry);
    return call + " && result=0\n";
}

// What the two states of a command with commands do: offer them, or leave the rest to one of them.
std::string statesOf(std::string const& function, CompletionModel const& command) {
    std::string names;
    std::string calls;
    for (auto const& next : command.commands) {
        auto const name = escaped(next.name, "\\:") + ":" + next.description;
        names += fmt::format("            {}\n", shellQuoted(name));
        calls += fmt::format("        {}) {}_{} && result=0 ;;\n", shellQuoted(next.name), function,
                             next.name);
    }
    return fmt::format(R"script(    case $state in
    command)
        local -a commands=(
{}        )
        _describe -t commands command commands && result=0
        ;;
    rest)
        curcontext="${{curcontext%:*:*}}:{}-$line[1]:"
        case $line[1] in
{}        esac
        ;;
    esac
)script",
                       names, function.substr(1), calls);
}

std::string functionsOf(std::string const& function, CompletionModel const& command) {
    auto text = fmt::format("\n{}() {{\n    local curcontext=\"$curcontext\" state state_descr "
                            "line result=1\n    typeset -A opt_args\n",
                            function);
    text += callOfArguments(command);
    if (!command.commands.empty())
        text += statesOf(function, command);
    text += "    return result\n}\n";
    for (auto const& next : command.commands)
        text += functionsOf(function + "_" + next.name, next);
    return text;
}

} // namespace

std::string zshCompletion(CompletionModel const& program) {
    return head + functionsOf("_" + program.name, program) + foot;
}

} // namespace KeldaTool
