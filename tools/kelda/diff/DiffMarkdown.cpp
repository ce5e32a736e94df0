// What comes from files stands in code spans, where no sign has a meaning, neither to Markdown nor
// to what looks for names of people and for numbers of requests in it. The two signs that a cell of
// a table cannot have in such a span stand between spans, by their numbers.
#include "diff/DiffFormats.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "Text.h"
#include "check/CheckTextParts.h"
#include "diff/DiffWords.h"

namespace KeldaTool {
namespace {

using KeldaDatabase::Change;
using KeldaDatabase::ChangeClass;
using KeldaDatabase::ChangeKind;
using KeldaDatabase::StoryPlace;

constexpr std::size_t mostPaths = 5;
constexpr std::size_t mostAgentsShown = 3; // others are folded
constexpr std::size_t mostAgents = 40;
constexpr std::size_t mostPlaces = 3;
constexpr std::size_t mostCharacters = 150; // of one text
constexpr std::size_t roomForEnd = 512;     // for what closes the text, whatever is left out

// One line of code, for any bytes.
std::string code(std::string_view bytes) {
    auto const text = clipped(printable(bytes), mostCharacters);
    std::string marked;
    bool isInSpan = false;
    for (char const c : text) {
        bool const mayBeInSpan = c != '`' && c != '|';
        if (mayBeInSpan != isInSpan)
            marked += '`';
        isInSpan = mayBeInSpan;
        if (mayBeInSpan)
            marked += c;
        else
            marked += c == '|' ? "&#124;" : "&#96;";
    }
    return isInSpan ? fmt::format("{}`", marked) : marked;
}

std::string codeOfMessage(std::string_view bytes) {
    return code(messageInOneLine(bytes));
}

// A long name of a file does not cost the number of the line.
std::string codeOfPlace(std::string const& file, std::int32_t line) {
    constexpr std::size_t mostDigits = 12;
    return file.empty()
               ? "no file"
               : code(fmt::format("{}:{}", clipped(printable(file), mostCharacters - mostDigits),
                                  line));
}

std::vector<std::string> codes(std::vector<std::string> const& texts) {
    std::vector<std::string> marked;
    for (auto const& text : texts)
        marked.push_back(code(text));
    return marked;
}

// The first of some texts, separated, and how many there are beside them.
std::string listed(std::vector<std::string> const& texts, std::size_t most,
                   std::string_view separator) {
    auto [shown, more] = firstOf(texts, most);
    if (more > 0)
        shown.push_back(fmt::format("and {} more", more));
    return fmt::format("{}", fmt::join(shown, separator));
}

std::string folded(std::string const& summary, std::string const& text) {
    return fmt::format("<details><summary>{}</summary>{}</details>", summary, text);
}

void addLine(std::string& cell, std::string const& line) {
    if (!line.empty())
        cell += fmt::format("{}{}", cell.empty() ? "" : "<br>", line);
}

std::string mountsText(Change const& change) {
    std::vector<std::string> mounts;
    for (auto const& mount : firstOf(change.mounts, mostAgents).shown)
        mounts.push_back(fmt::format("{} {}", code(mount.path), code(mount.flags)));
    if (auto const more = change.mounts.size() - mounts.size(); more > 0)
        mounts.push_back(fmt::format("and {} more", more));
    auto const* const verb = change.kind == ChangeKind::agentRemoved ? "mounted" : "mounts";
    return folded(fmt::format("{} {}", verb, counted(change.mounts.size(), "path")),
                  fmt::format("{}", fmt::join(mounts, "<br>")));
}

std::string changeCell(Change const& change) {
    std::vector<std::string> paths;
    for (auto const& path : change.paths)
        if (!path.path.empty())
            paths.push_back(code(path.path));
    std::string cell(headlineOf(change));
    if (change.follows)
        cell += " (follows from other mounts)";
    addLine(cell, listed(paths, mostPaths, "<br>"));
    addLine(cell, valuesText(change, codeOfMessage));
    if (!change.mounts.empty())
        addLine(cell, mountsText(change));
    return cell;
}

std::string agentsCell(Change const& change) {
    auto const agents = codes(agentsOf(change));
    auto const count = agents.size();
    if (count <= mostAgentsShown)
        return fmt::format("{}", fmt::join(agents, ", "));
    return folded(counted(count, "agent"), listed(agents, mostAgents, ", "));
}

std::string placeText(std::string_view side, StoryPlace const& place, bool withIncludes) {
    auto text = fmt::format("{} {}", side, codeOfPlace(place.file, place.line));
    if (!place.text.empty())
        text += fmt::format(": {}", code(place.text));
    if (withIncludes)
        for (auto const& from : place.from)
            text += fmt::format("<br>included by {}", codeOfPlace(from.file, from.line));
    return text;
}

std::string placesText(std::string_view side, std::vector<StoryPlace> const& places,
                       bool withIncludes) {
    std::vector<std::string> texts;
    for (auto const& place : firstOf(places, mostPlaces).shown)
        texts.push_back(placeText(side, place, withIncludes));
    if (auto const more = places.size() - texts.size(); more > 0)
        texts.push_back(fmt::format("and {}", counted(more, "more line")));
    return fmt::format("{}", fmt::join(texts, "<br>"));
}

std::string linesCell(Change const& change) {
    std::string cell = causeText(change, code);
    addLine(cell, placesText("old", change.oldPlaces, change.newPlaces.empty()));
    addLine(cell, placesText("new", change.newPlaces, true));
    return cell;
}

std::string rowOf(Change const& change) {
    return fmt::format("| {} | {} | {} |\n", changeCell(change), agentsCell(change),
                       linesCell(change));
}

class Comment {
  public:
    std::string of(DiffResult const& result) {
        if (!result.device.empty())
            text_ = fmt::format("### {}\n\n", code(result.device));
        text_ += fmt::format("**{}**\n", totalsText(result));
        for (auto const& text : leftOutTexts(result))
            text_ += fmt::format("\n{}\n", text);
        for (auto const severity : changeClasses)
            addClass(result, severity);
        if (leftOut_ > 0)
            text_ += fmt::format("\n{} left out, for want of room.\n", counted(leftOut_, "change"));
        return std::move(text_);
    }

  private:
    // The harmless ones are folded.
    void addClass(DiffResult const& result, ChangeClass severity) {
        auto const count = result.counts()[static_cast<std::size_t>(severity)];
        if (count == 0)
            return;
        auto const what = counted(count, fmt::format("{} change", nameOf(severity)));
        bool const isFolded = severity == ChangeClass::harmless;
        auto const heading = isFolded ? fmt::format("\n<details><summary>{}: {}</summary>\n", what,
                                                    meaningOf(severity))
                                      : fmt::format("\n#### {}: {}\n", what, meaningOf(severity));
        bool isFirst = true;
        for (auto const& change : result.difference.changes)
            if (change.severity == severity && add(isFirst ? heading : std::string(), change))
                isFirst = false;
        if (isFolded && !isFirst)
            text_ += "\n</details>\n";
    }

    // Whether there was room for it. What comes behind the first for which there is none is left
    // out, too: the rest is what is less bad.
    bool add(std::string const& heading, Change const& change) {
        auto const row = rowOf(change);
        auto const before =
            heading.empty()
                ? heading
                : fmt::format("{}\n| Change | Agents | Lines |\n| --- | --- | --- |\n", heading);
        if (leftOut_ > 0 ||
            text_.size() + before.size() + row.size() + roomForEnd >= commentLimit) {
            ++leftOut_;
            return false;
        }
        text_ += before;
        text_ += row;
        return true;
    }

    std::string text_;
    std::size_t leftOut_ = 0;
};

} // namespace

std::string diffMarkdown(DiffResult const& result) {
    return Comment().of(result);
}

} // namespace KeldaTool
