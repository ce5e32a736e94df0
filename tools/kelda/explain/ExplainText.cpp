#include "explain/ExplainText.h"

#include <algorithm>

#include <fmt/format.h>

#include "Text.h"
#include "explain/ExplainLines.h"

namespace KeldaTool {
namespace {

using namespace KeldaDatabase;

// Lines with what they are about further left.
class Outline {
  public:
    void add(std::size_t depth, std::string const& line) {
        text_ += std::string(2 * depth, ' ') + line + "\n";
    }
    void heading(std::string const& line) { text_ += (text_.empty() ? "" : "\n") + line + "\n"; }
    // The line of a file as it stands there.
    void source(std::size_t depth, StoryPlace const& place) {
        if (!place.text.empty())
            add(depth, printable(place.text));
    }
    std::string const& text() const { return text_; }

  private:
    std::string text_;
};

void addDeclarations(Outline& outline, DeclaredPath const& path) {
    auto const type = path.type.empty() ? "has an empty type" : "is a " + printable(path.type);
    outline.add(1, fmt::format("{} {}{}", printable(path.path), type,
                               path.isConfig ? ", and a config path" : ""));
    for (auto const& line : path.lines) {
        bool const decides = &line == &path.lines.back();
        auto text =
            placeText(line.place) + (decides ? ": gives the type" : ": a later line counts");
        if (!line.attribute.empty())
            text += "; " + line.attribute;
        outline.add(2, text);
        outline.source(3, line.place);
    }
    if (path.directoryBecauseOf) {
        outline.add(2, placeText(path.directoryBecauseOf->place) +
                           ": makes it a directory, as it lies below");
        outline.source(3, path.directoryBecauseOf->place);
    }
}

void addDeclarations(Outline& outline, std::vector<DeclaredPath> const& paths) {
    outline.heading("Declaration");
    for (auto const& path : paths)
        addDeclarations(outline, path);
    if (paths.empty())
        outline.add(1, "No preinit line declares it.");
}

std::string groupText(StoryLine const& line) {
    if (line.groupPriority == 0)
        return "in group " + printable(line.group);
    return fmt::format("in group {}, priority {} ({})", printable(line.group), line.groupPriority,
                       placeText(line.groupPlace));
}

void addLine(Outline& outline, StoryLine const& line, bool isFirst) {
    auto text = fmt::format("{}: {}", placeText(line.place), shownFlags(line.flags));
    if (!isFirst)
        text += fmt::format(", with the lines above {}", shownFlags(line.flagsAfter));
    outline.add(2, text);
    outline.source(3, line.place);
    if (line.writtenPath.empty())
        outline.add(3, "stands for every config path");
    for (auto const& alias : line.aliases)
        outline.add(3, aliasText(alias));
    if (!line.group.empty() || line.groupPriority != 0)
        outline.add(3, groupText(line));
    if (line.isConditional)
        outline.add(3, fmt::format("conditional: {} ({})", printable(line.condition),
                                   placeText(line.conditionPlace)));
    if (!line.otherType.empty())
        outline.add(
            3, fmt::format("the line's own type, {}, does not count", printable(line.otherType)));
}

void addDirectory(Outline& outline, StoryDirectory const& directory) {
    constexpr std::size_t most = 5;
    auto const count = directory.below.size();
    outline.add(2, fmt::format("mounts below it make it a directory: {} -> {}",
                               shownFlags(directory.before), shownFlags(directory.after)));
    for (std::size_t i = 0; i < std::min(count, most); ++i)
        outline.add(3, fmt::format("{}, {}", printable(directory.below[i].path),
                                   shownFlags(directory.below[i].flags)));
    if (count > most)
        outline.add(3, fmt::format("and {} more", count - most));
}

void addInheritance(Outline& outline, StoryInheritance const& inherited) {
    auto const parent = inherited.parent.empty() ? "the root flags" : printable(inherited.parent);
    outline.add(2, fmt::format("inherits from {}, {}: {} -> {}", parent,
                               shownFlags(inherited.parentFlags), shownFlags(inherited.before),
                               shownFlags(inherited.after)));
}

void addMount(Outline& outline, StoryMount const& mount) {
    outline.add(1, fmt::format("{}, {}, {}", printable(mount.path), printable(mount.type),
                               shownFlags(mount.flags)));
    for (auto const& line : mount.lines)
        addLine(outline, line, &line == &mount.lines.front());
    if (mount.directory)
        addDirectory(outline, *mount.directory);
    if (mount.inherited)
        addInheritance(outline, *mount.inherited);
}

void addAgent(Outline& outline, StoryAgent const& agent) {
    outline.heading(fmt::format("Agent{} {}{}", agent.names.size() == 1 ? "" : "s",
                                listText(agent.names),
                                agent.hasActiveMounts ? ", active mounts" : ""));
    for (auto const& mount : agent.mounts)
        addMount(outline, mount);
}

void addMissingMounts(Outline& outline, ExplainAnswer const& answer) {
    if (answer.question.agent.empty()) {
        outline.heading("Agents");
        outline.add(1, "No agent mounts it.");
        return;
    }
    outline.heading("Agent " + printable(answer.question.agent));
    if (answer.foundMountProfile)
        outline.add(1, "It does not mount it.");
    else
        outline.add(1, "No mount profile is for it.");
    if (!answer.nearAgents.empty())
        outline.add(1, fmt::format("There are profiles for {}.", listText(answer.nearAgents)));
}

void addFaults(Outline& outline, ExplainAnswer const& answer) {
    auto const& first = answer.faults.front();
    auto const place = first.place.isKnown() ? placeText(first.place) : std::string("kelda");
    outline.heading("Fault");
    outline.add(1, fmt::format("{}: {}", place,
                               printable(first.message.substr(0, first.message.find('\n')))));
    outline.source(2, first.place);
    outline.add(1, "The agent does not start. The rest is told as if it went on.");
}

void addNear(Outline& outline, std::vector<NearLine> const& near) {
    outline.heading("Close to it");
    for (auto const& line : near) {
        outline.add(1, fmt::format("{}: {}", placeText(line.place), nearText(line)));
        outline.source(2, line.place);
    }
}

} // namespace

std::string explainText(ExplainAnswer const& answer) {
    Outline outline;
    outline.heading(printable(answer.question.path));
    if (!answer.faults.empty())
        addFaults(outline, answer);
    addDeclarations(outline, answer.declarations);
    for (auto const& agent : answer.agents)
        addAgent(outline, agent);
    if (answer.agents.empty())
        addMissingMounts(outline, answer);
    if (!answer.near.empty())
        addNear(outline, answer.near);
    return outline.text();
}

} // namespace KeldaTool
