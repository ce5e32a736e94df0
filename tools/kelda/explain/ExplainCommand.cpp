#include "explain/ExplainCommand.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "LoadFault.h"
#include "Values.h"
#include "database/findings/Rules.h"
#include "database/findings/Spelling.h"
#include "explain/ExplainDocument.h"
#include "explain/ExplainText.h"
#include "explain/RulePage.h"

namespace KeldaTool {
namespace {

constexpr char const* description =
    "Say where a mount comes from, and why it has its flags.\n"
    "\n"
    "For a path: the preinit lines that give it its type, every profile line that mounts it with\n"
    "its group, its aliases and what it adds to the flags, what directories get from the mounts\n"
    "below and above them, and every line that comes close to it, with the reason why it does\n"
    "not count. A '*' in PATH stands for any text within a name. Without --agent all agents are\n"
    "looked at, and the tokens of their names are '*'.\n"
    "\n"
    "For a rule of 'kelda check': why it matters and what to do.";

constexpr char const* footer =
    "Exit status:\n"
    "  0  The answer was printed. That no agent mounts a declared path is an answer too.\n"
    "  1  The path is neither declared nor mounted, a fault ends the load of the agent, or\n"
    "     the answer could not be written.\n"
    "  2  The call was wrong, or a folder cannot be read.\n"
    "\n"
    "Examples:\n"
    "  kelda explain hardware/fan/tray/3/speed\n"
    "  kelda explain hardware/fan/tray/3/speed --agent FanTray-3 --format json\n"
    "  kelda explain --rule path-without-type";

constexpr std::string_view listOfRules = "list";

// The rule that is called nearly so; empty when none is.
std::string_view nearestRule(std::string_view name) {
    std::vector<std::string_view> names{listOfRules};
    for (auto const& rule : KeldaDatabase::allRules())
        names.push_back(rule.name);
    return KeldaDatabase::nearestTo(name, names, name.size() / 3);
}

std::string refuseUnknownRule(std::string const& name) {
    if (name == listOfRules || KeldaDatabase::ruleNamed(name) != nullptr)
        return {};
    auto const nearest = nearestRule(name);
    auto const hint = nearest.empty() ? std::string("'--rule list' shows all")
                                      : fmt::format("did you mean '{}'?", nearest);
    return fmt::format("there is no rule '{}'; {}", name, hint);
}

void addTextFormatOption(CLI::App& command, Format& format) {
    auto const take = [&format](std::string const& name) {
        format = name == "json" ? Format::json : Format::table;
    };
    auto* const option = command.add_option_function<std::string>(
        "--format", take, "How to print: for people or as JSON");
    mustBeOneOf(*option, {"text", "json"});
    option->default_str("text");
}

} // namespace

CLI::App& ExplainCommand::addTo(CLI::App& program) {
    auto& command = *program.add_subcommand("explain", description);
    auto* const path =
        command.add_option("PATH", question_.path, "Path, without a '/' at its front");
    mustBeRelativePath(*path);
    auto* const agent =
        command.add_option("--agent", question_.agent, "Only this agent string, such as FanTray-2");
    mustNotBeEmpty(*agent->type_name("AGENT"));
    auto* const rule =
        command.add_option("--rule", rule_, "Explain this rule of 'kelda check'; 'list' shows all");
    rule->type_name("NAME")->check(CLI::Validator(refuseUnknownRule, ""));
    rule->excludes(path)->excludes(agent);
    device_.addTo(command);
    addTextFormatOption(command, format_);
    command.final_callback([this] {
        if (question_.path.empty() && rule_.empty())
            throw CLI::RequiredError("PATH");
    });
    command.footer(footer);
    return command;
}

Report ExplainCommand::run(bool /*colour*/) const {
    if (rule_.empty())
        return explainPath();
    return {rule_ == listOfRules ? ruleList() : rulePage(*KeldaDatabase::ruleNamed(rule_)), "",
            ExitStatus::success};
}

Report ExplainCommand::explainPath() const {
    auto const answer = askExplain(device_, question_);
    if (!answer.unreadable.empty()) {
        auto report = faultReport({"", answer.unreadable, -1}, format_);
        report.status = ExitStatus::wrongCall;
        return report;
    }
    bool const isAnswered = answer.isKnown() && answer.faults.empty();
    return {format_ == Format::json ? documentText(explainDocument(answer)) : explainText(answer),
            answer.note, isAnswered ? ExitStatus::success : ExitStatus::failure};
}

} // namespace KeldaTool
