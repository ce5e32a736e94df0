#include "CommandLine.h"

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include <fmt/format.h>

#include "HelpFormatter.h"
#include "Text.h"
#include "agents/AgentsCommand.h"
#include "check/CheckCommand.h"
#include "completion/CompletionCommand.h"
#include "diff/DiffCommand.h"
#include "explain/ExplainCommand.h"
#include "formatting/FmtCommand.h"
#include "graph/GraphCommand.h"
#include "mounts/MountsCommand.h"
#include "preinit/ConfigCommand.h"
#include "preinit/PreinitCommand.h"
#include "report/ReportCommand.h"
#include "tree/TreeCommand.h"
#include "who/WhoCommand.h"

namespace KeldaTool {
namespace {

constexpr char const* description =
    "Ask what preinit files declare and what mount profiles give to agents, and check them.";

constexpr char const* footer =
    "Results go to standard output, everything else to standard error.\n"
    "\n"
    "Exit status:\n"
    "  0  success\n"
    "  1  a file could not be loaded, a check found errors, what was asked for is not there,\n"
    "     or a result could not be written\n"
    "  2  wrong call\n"
    "\n"
    "Environment:\n"
    "  NO_COLOR                  When not empty, tables have no colour on a terminal either.\n"
    "  KELDA_EXTRA_PREINIT_PATH  Further preinit files and folders, separated by ':'.\n"
    "  KELDA_EXTRA_PROFILE_PATH  A further folder with mount profiles.\n"
    "  MFI_NO_DEFAULT_PREINIT    When set, the folder of --preinit is not read.\n"
    "\n"
    "Examples:\n"
    "  kelda mounts FanTray-2 --preinit ./preinit --profiles ./profiles\n"
    "  kelda check --preinit ./preinit --profiles ./profiles\n"
    "  kelda who sys/clock --flag w\n"
    "  source <(kelda completion bash)\n"
    "\n"
    "'kelda COMMAND --help' explains a command.";

class CommandLine {
  public:
    CommandLine() : program_(description, "kelda") {
        program_.formatter(std::make_shared<HelpFormatter>());
        program_.set_help_flag("-h,--help", "Print this help and exit");
        program_.set_version_flag("--version", "kelda " KELDA_VERSION,
                                  "Print the version and exit");
        program_.require_subcommand(0, 1);
        program_.footer(footer);
        add(std::make_unique<MountsCommand>());
        add(std::make_unique<PreinitCommand>());
        add(std::make_unique<ConfigCommand>());
        add(std::make_unique<CheckCommand>());
        add(std::make_unique<ExplainCommand>());
        add(std::make_unique<WhoCommand>());
        add(std::make_unique<AgentsCommand>());
        add(std::make_unique<TreeCommand>());
        add(std::make_unique<DiffCommand>());
        add(std::make_unique<FmtCommand>());
        add(std::make_unique<ReportCommand>());
        add(std::make_unique<GraphCommand>());
        add(std::make_unique<CompletionCommand>());
    }

    Report run(int argc, char const* const* argv, bool colour) {
        try {
            words_.assign(argv + std::min(argc, 1), argv + argc);
            program_.parse(reversedWords(words_));
        } catch (CLI::CallForHelp const&) {
            return {program_.help(), "", ExitStatus::success};
        } catch (CLI::CallForVersion const& call) {
            return {std::string(call.what()) + "\n", "", ExitStatus::success};
        } catch (CLI::ExtrasError const&) {
            return wrongCall(unexpectedArgument());
        } catch (CLI::ParseError const& error) {
            return wrongCall(error.what());
        }
        auto const* const entry = named();
        return entry == nullptr ? wrongCall("a command is missing") : entry->command->run(colour);
    }

  private:
    struct Entry {
        std::unique_ptr<Command> command;
        CLI::App* words;
    };

    void add(std::unique_ptr<Command> command) {
        auto& words = command->addTo(program_);
        words.group("Commands");
        commands_.push_back({std::move(command), &words});
    }

    // The words as the parser takes them. What "--option=" gives is the empty value; the parser by
    // itself would go on to the next word.
    std::vector<std::string> reversedWords(std::vector<std::string> const& words) const {
        std::vector<std::string> reversed;
        bool mayBeOption = true;
        for (auto const& word : words) {
            mayBeOption = mayBeOption && word != "--";
            auto const name = word.substr(0, word.find('='));
            if (mayBeOption && word == name + "=" && takesValue(name))
                reversed.insert(reversed.end(), {name, ""});
            else
                reversed.push_back(word);
        }
        std::reverse(reversed.begin(), reversed.end());
        return reversed;
    }

    // Whether this is the name of an option that does.
    bool takesValue(std::string const& name) const {
        return name.starts_with("--") &&
               std::any_of(commands_.begin(), commands_.end(), [&name](Entry const& entry) {
                   auto const* const option = entry.words->get_option_no_throw(name);
                   return option != nullptr && option->get_items_expected_max() > 0;
               });
    }

    // The command that the call names; null when it names none.
    Entry const* named() const {
        for (auto const& entry : commands_)
            if (entry.words->parsed())
                return &entry;
        return nullptr;
    }

    // Only the first one: those after it may well belong to it.
    std::string unexpectedArgument() const {
        auto const argument = program_.remaining(true).front();
        if (named() == nullptr && !argument.starts_with('-'))
            return fmt::format("there is no command '{}'", argument);
        return fmt::format("unexpected argument '{}'", argument);
    }

    Report wrongCall(std::string const& what) const {
        auto const name = named() == nullptr ? "kelda" : "kelda " + named()->words->get_name();
        auto const results =
            named() == nullptr ? "" : named()->command->wrongCallResults(words_, what);
        return {results, fmt::format("{}: {}\nTry '{} --help'.\n", name, printable(what), name),
                ExitStatus::wrongCall};
    }

    std::vector<std::string> words_; // of the call
    CLI::App program_;
    std::vector<Entry> commands_;
};

} // namespace

Report runCommandLine(int argc, char const* const* argv, bool colour) {
    return CommandLine().run(argc, argv, colour);
}

} // namespace KeldaTool
