#include "diff/DiffFormats.h"

#include <algorithm>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "Text.h"
#include "check/CheckTextParts.h"
#include "diff/DiffWords.h"

namespace KeldaTool {
namespace {

using KeldaDatabase::Change;
using KeldaDatabase::ChangeClass;
using KeldaDatabase::ChangedMount;
using KeldaDatabase::ChangedPath;
using KeldaDatabase::ChangeKind;
using KeldaDatabase::StoryPlace;

constexpr std::string_view bold = "\x1b[1m";
constexpr std::string_view red = "\x1b[31m";
constexpr std::string_view green = "\x1b[32m";
constexpr std::string_view reset = "\x1b[0m";

constexpr std::size_t mostPaths = 5;
constexpr std::size_t mostAgents = 5;
constexpr std::size_t mostPlaces = 3;
constexpr std::size_t mostOfLine = 200; // characters

std::string_view colourOf(ChangeClass severity) {
    switch (severity) {
    case ChangeClass::dangerous:
        return "\x1b[1;31m"; // red
    case ChangeClass::risky:
        return "\x1b[1;33m"; // yellow
    case ChangeClass::notable:
        return "\x1b[1;36m"; // cyan
    case ChangeClass::harmless:
        break;
    }
    return "\x1b[1;32m"; // green
}

// "A, B and C"; "A, B and 7 more".
std::string listText(std::vector<std::string> const& texts, std::size_t most) {
    auto [shown, more] = firstOf(texts, most);
    if (more > 0)
        shown.push_back(fmt::format("{} more", more));
    if (shown.size() < 2)
        return shown.empty() ? std::string() : shown.front();
    return fmt::format("{} and {}", fmt::join(shown.begin(), shown.end() - 1, ", "), shown.back());
}

std::string pathText(Change const& change, ChangedPath const& path) {
    bool const hasType = !path.type.empty() && (change.kind == ChangeKind::mountAdded ||
                                                change.kind == ChangeKind::mountRemoved);
    return hasType ? fmt::format("{}, {}", printable(path.path), printable(path.type))
                   : printable(path.path);
}

std::string mountText(ChangedMount const& mount) {
    return fmt::format("{} {}", printable(mount.path),
                       mount.flags.empty() ? "without flags" : printable(mount.flags));
}

std::string placeOf(std::string const& file, std::int32_t line) {
    return file.empty() ? "no file" : fmt::format("{}:{}", printable(file), line);
}

class ChangesText {
  public:
    explicit ChangesText(bool colour) : colour_(colour) {}

    std::string of(DiffResult const& result) {
        if (!result.device.empty())
            add(painted(fmt::format("Device {}", printable(result.device)), bold));
        for (auto const severity : changeClasses)
            addClass(result, severity);
        add(totalsText(result));
        for (auto const& text : leftOutTexts(result))
            add(text);
        return std::move(text_);
    }

  private:
    std::string painted(std::string const& text, std::string_view colour) const {
        return colour_ ? fmt::format("{}{}{}", colour, text, reset) : text;
    }
    void add(std::string const& line) { text_ += fmt::format("{}\n", line); }
    // A line below the headline of a change, unless it is empty.
    void addBelow(std::string const& line) {
        if (!line.empty())
            add(fmt::format("    {}", line));
    }

    void addClass(DiffResult const& result, ChangeClass severity) {
        auto const count = result.counts()[static_cast<std::size_t>(severity)];
        if (count == 0)
            return;
        auto const what = counted(count, fmt::format("{} change", nameOf(severity)));
        add(fmt::format("{}: {}\n", painted(what, colourOf(severity)), meaningOf(severity)));
        for (auto const& change : result.difference.changes)
            if (change.severity == severity)
                addChange(change);
    }

    void addChange(Change const& change) {
        addHeadline(change);
        addBelow(valuesText(change, messageInOneLine));
        addAgents(change);
        if (!change.mounts.empty())
            addMounts(change);
        addBelow(causeText(change, printable));
        addPlaces(change);
        add("");
    }

    void addHeadline(Change const& change) {
        auto const headline = painted(std::string(headlineOf(change)), bold);
        auto const* const follows = change.follows ? " (follows from other mounts)" : "";
        auto const& paths = change.paths;
        bool const isOfPaths = !paths.empty() && !paths.front().path.empty();
        auto const what = !isOfPaths          ? std::string()
                          : paths.size() == 1 ? fmt::format(": {}", pathText(change, paths.front()))
                                              : fmt::format(": {} paths", paths.size());
        add(fmt::format("  {}{}{}", headline, what, follows));
        if (isOfPaths && paths.size() > 1)
            addPaths(change);
    }

    void addPaths(Change const& change) {
        std::vector<std::string> paths;
        for (auto const& path : change.paths)
            paths.push_back(pathText(change, path));
        auto const [shown, more] = firstOf(paths, mostPaths);
        for (auto const& path : shown)
            addBelow(fmt::format("  {}", path));
        if (more > 0)
            addBelow(fmt::format("  and {} more", more));
    }

    void addAgents(Change const& change) {
        std::vector<std::string> agents;
        for (auto const& agent : agentsOf(change))
            agents.push_back(printable(agent));
        if (agents.size() == 1)
            addBelow(fmt::format("for {}", agents.front()));
        else if (!agents.empty())
            addBelow(fmt::format("for {} agents: {}", agents.size(), listText(agents, mostAgents)));
    }

    void addMounts(Change const& change) {
        std::vector<std::string> mounts;
        for (auto const& mount : change.mounts)
            mounts.push_back(mountText(mount));
        addBelow(fmt::format("{} {}: {}",
                             change.kind == ChangeKind::agentRemoved ? "mounted" : "mounts",
                             counted(mounts.size(), "path"), listText(mounts, mostPaths)));
    }

    void addPlaces(Change const& change) {
        std::size_t width = 0;
        for (auto const* const places : {&change.oldPlaces, &change.newPlaces})
            for (auto const& place : firstOf(*places, mostPlaces).shown)
                width = std::max(width, displayWidth(placeOf(place.file, place.line)));
        // What led to a file is the same on both sides, or else a change of its own.
        addPlaces("old", red, change.oldPlaces, width, change.newPlaces.empty());
        addPlaces("new", green, change.newPlaces, width, true);
    }

    void addPlaces(std::string const& side, std::string_view colour,
                   std::vector<StoryPlace> const& places, std::size_t width, bool withIncludes) {
        auto const [shown, more] = firstOf(places, mostPlaces);
        for (auto const& place : shown)
            addPlace(painted(side, colour), place, width, withIncludes);
        if (more > 0)
            addBelow(fmt::format("     and {}", counted(more, "more line")));
    }

    void addPlace(std::string const& side, StoryPlace const& place, std::size_t width,
                  bool withIncludes) {
        auto line = fmt::format("{}  {}", side, placeOf(place.file, place.line));
        if (!place.text.empty()) {
            line.append(width - displayWidth(placeOf(place.file, place.line)) + 2, ' ');
            line += clipped(printable(place.text), mostOfLine);
        }
        addBelow(line);
        if (withIncludes)
            for (auto const& from : place.from)
                addBelow(fmt::format("     included by {}", placeOf(from.file, from.line)));
    }

    bool colour_;
    std::string text_;
};

} // namespace

std::string diffText(DiffResult const& result, bool colour) {
    return ChangesText(colour).of(result);
}

} // namespace KeldaTool
