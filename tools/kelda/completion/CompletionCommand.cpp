#include "completion/CompletionCommand.h"

#include <CLI/CLI.hpp>

#include "Values.h"
#include "completion/BashCompletion.h"
#include "completion/CompletionModel.h"
#include "completion/ZshCompletion.h"

namespace KeldaTool {
namespace {

constexpr char const* description =
    "Print a script that makes a shell complete kelda's words.\n"
    "\n"
    "The script knows the commands and options of this very program. An installation has put\n"
    "it in its place already; what follows is for shells that do not look there.";

constexpr char const* footer =
    "Exit status:\n"
    "  0  The script was printed.\n"
    "  1  The script could not be written.\n"
    "  2  The call was wrong.\n"
    "\n"
    "Examples:\n"
    "  source <(kelda completion bash)     in ~/.bashrc\n"
    "  source <(kelda completion zsh)      in ~/.zshrc, behind compinit\n"
    "  kelda completion zsh > DIR/_kelda   with a folder DIR of $fpath";

} // namespace

CLI::App& CompletionCommand::addTo(CLI::App& program) {
    program_ = &program;
    auto& command = *program.add_subcommand("completion", description);
    auto* const shell = command.add_option("SHELL", shell_, "The shell: bash or zsh");
    mustBeOneOf(*shell->required(), {"bash", "zsh"});
    command.footer(footer);
    return command;
}

Report CompletionCommand::run(bool /*colour*/) const {
    auto const model = completionModel(*program_);
    return {shell_ == "zsh" ? zshCompletion(model) : bashCompletion(model), "",
            ExitStatus::success};
}

} // namespace KeldaTool
