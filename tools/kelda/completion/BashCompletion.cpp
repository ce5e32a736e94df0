// The script is two tables, which are made of the program's definitions, and a function that reads
// a command line with their help.
#include "completion/BashCompletion.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "completion/ShellText.h"

namespace KeldaTool {
namespace {

constexpr char const* head = "# bash completion for kelda, printed by 'kelda completion bash'.\n";

constexpr char const* commandTableHead = R"script(
# The commands and options of a command.
_kelda_command() {
    case $1 in
)script";

constexpr char const* wordTableHead = R"script(
# What an option of a command takes, and the options that have no place beside it. An argument is
# told by its number.
_kelda_word() {
    case $1 in
)script";

constexpr char const* tableFoot = R"script(    *) return 1 ;;
    esac
}
)script";

constexpr char const* functions = R"script(
# Offers the values of a kind that begin with $current.
_kelda_offer() {
    case $1 in
    # Names of files may need quotes, which bash itself does best.
    directory) compopt -o dirnames 2>/dev/null ;;
    file) compopt -o default 2>/dev/null ;;
    'word '*) COMPREPLY=($(compgen -P "$prefix" -W "${1#word }" -- "$current")) ;;
    esac
}

# Offers the options that still have a place.
_kelda_offer_options() {
    local option left=''
    for option in $options; do
        [[ $ruled_out == *" $option "* ]] || left+=" $option"
    done
    COMPREPLY=($(compgen -W "$left" -- "$current"))
}

_kelda() {
    local IFS=$' \t\n'
    local command=kelda commands='' options='' takes='' rules_out='' ruled_out=' '
    local arguments=0 only_arguments='' prefix='' value='' word i
    local current=${COMP_WORDS[COMP_CWORD]}
    COMPREPLY=()

    for ((i = 1; i < COMP_CWORD; i++)); do
        word=${COMP_WORDS[i]}
        if [[ $word =~ ^[:=]+$ ]]; then
            # bash splits words there. What follows is the value of the option before it, or else
            # belongs to the same word.
            [[ -n $value || ${COMP_WORDS[i + 1]} == -* ]] || i=$((i + 1))
        elif [[ -n $value ]]; then
            value=''
        elif [[ -z $only_arguments && $word == -- ]]; then
            only_arguments=yes
        elif [[ -z $only_arguments && $word == -* ]]; then
            takes='' rules_out=''
            _kelda_word "$command ${word%%=*}"
            ruled_out+="$rules_out "
            [[ $word == *=* ]] || value=$takes
        elif [[ $arguments -eq 0 ]] && _kelda_command "$command $word"; then
            command+=" $word"
            ruled_out=' '
        else
            arguments=$((arguments + 1))
        fi
    done
    # Inside a word that bash split.
    [[ $i -eq $COMP_CWORD ]] || return 0
    if [[ $current =~ ^[:=]+$ ]]; then
        [[ -n $value ]] || return 0
        current=''
    fi

    takes=''
    _kelda_command "$command"
    if [[ -n $value ]]; then
        _kelda_offer "$value"
    elif [[ -z $only_arguments && $current == --*=* ]]; then
        prefix=${current%%=*}=
        _kelda_word "$command ${current%%=*}"
        current=${current#*=}
        _kelda_offer "$takes"
    elif [[ -z $only_arguments && $current == -* ]]; then
        _kelda_offer_options
    elif [[ -n $commands && $arguments -eq 0 ]]; then
        COMPREPLY=($(compgen -W "$commands" -- "$current"))
    else
        _kelda_word "$command $((arguments + 1))"
        if [[ -n $takes && $takes != anything ]]; then
            _kelda_offer "$takes"
        elif [[ -z $only_arguments ]]; then
            _kelda_offer_options
        fi
    fi
    return 0
}

complete -F _kelda kelda
)script";

std::string kindOf(CompletionValue const& value) {
    switch (value.kind) {
    case CompletionValue::Kind::directory:
        return "directory";
    case CompletionValue::Kind::file:
        return "file";
    case CompletionValue::Kind::word:
        return fmt::format("word {}", fmt::join(value.words, " "));
    case CompletionValue::Kind::anything:
        break;
    }
    return "anything";
}

std::string commandRow(std::string const& path, CompletionModel const& command) {
    std::vector<std::string> commands;
    for (auto const& next : command.commands)
        commands.push_back(next.name);
    std::vector<std::string> options;
    for (auto const& option : command.options)
        options.insert(options.end(), option.names.begin(), option.names.end());
    return fmt::format("    {})\n        commands={}\n        options={}\n        ;;\n",
                       shellQuoted(path), shellQuoted(fmt::format("{}", fmt::join(commands, " "))),
                       shellQuoted(fmt::format("{}", fmt::join(options, " "))));
}

std::string optionRow(std::string const& path, CompletionOption const& option) {
    std::vector<std::string> words;
    for (auto const& name : option.names)
        words.push_back(shellQuoted(path + " " + name));
    auto rulesOut = option.rulesOut;
    if (!option.isRepeatable)
        rulesOut.insert(rulesOut.end(), option.names.begin(), option.names.end());
    return fmt::format("    {}) takes={} rules_out={} ;;\n", fmt::join(words, " | "),
                       shellQuoted(option.value ? kindOf(*option.value) : ""),
                       shellQuoted(fmt::format("{}", fmt::join(rulesOut, " "))));
}

std::string argumentRow(std::string const& path, std::size_t number,
                        CompletionArgument const& argument) {
    auto const words = argument.isRepeatable ? shellQuoted(path + " ") + "[0-9]*"
                                             : shellQuoted(fmt::format("{} {}", path, number));
    return fmt::format("    {}) takes={} rules_out='' ;;\n", words,
                       shellQuoted(kindOf(argument.value)));
}

std::string wordRows(std::string const& path, CompletionModel const& command) {
    std::string rows;
    for (auto const& option : command.options)
        rows += optionRow(path, option);
    for (std::size_t i = 0; i < command.arguments.size(); ++i)
        rows += argumentRow(path, i + 1, command.arguments[i]);
    return rows;
}

// The rows of a command and of all below it, each made by row(path, command).
template <class Row>
std::string rowsOfAll(std::string const& path, CompletionModel const& command, Row const& row) {
    auto rows = row(path, command);
    for (auto const& next : command.commands)
        rows += rowsOfAll(path + " " + next.name, next, row);
    return rows;
}

} // namespace

std::string bashCompletion(CompletionModel const& program) {
    std::string script = head;
    script += commandTableHead + rowsOfAll(program.name, program, commandRow) + tableFoot;
    script += wordTableHead + rowsOfAll(program.name, program, wordRows) + tableFoot;
    return script + functions;
}

} // namespace KeldaTool
