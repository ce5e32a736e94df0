#include "diff/DiffResult.h"

#include <algorithm>
#include <set>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "Text.h"

namespace KeldaTool {

using KeldaDatabase::Change;
using KeldaDatabase::ChangeClass;

namespace {

// "-Active-" variants count as agents here, but not among those of a device.
std::string agentsText(DiffResult const& result) {
    auto const count = result.agentCount();
    auto const& difference = result.difference;
    if (count == 0)
        return "of declared paths only";
    if (difference.agentsBefore != difference.agentsAfter || count > difference.agentsAfter)
        return fmt::format("for {}", counted(count, "agent"));
    return fmt::format("for {} of {}", count, counted(difference.agentsAfter, "agent"));
}

std::string withoutChangesText(DiffResult const& result) {
    return result.lesser + result.following > 0 ? "no changes to show"
                                                : "no differences in meaning";
}

} // namespace

ClassCounts DiffResult::counts() const {
    ClassCounts counts{};
    for (auto const& change : difference.changes)
        ++counts[static_cast<std::size_t>(change.severity)];
    return counts;
}

std::size_t DiffResult::agentCount() const {
    std::set<std::string_view> agents;
    for (auto const& change : difference.changes)
        for (auto const& path : change.paths)
            agents.insert(path.agents.begin(), path.agents.end());
    return agents.size();
}

std::vector<std::string> agentsOf(Change const& change) {
    std::set<std::string> agents;
    for (auto const& path : change.paths)
        agents.insert(path.agents.begin(), path.agents.end());
    return {agents.begin(), agents.end()};
}

std::string classesText(ClassCounts const& counts) {
    std::vector<std::string> classes;
    for (auto const severity : changeClasses)
        if (auto const count = counts[static_cast<std::size_t>(severity)]; count > 0)
            classes.push_back(fmt::format("{} {}", count, nameOf(severity)));
    return fmt::format("{}", fmt::join(classes, ", "));
}

std::string totalsText(DiffResult const& result) {
    auto const& changes = result.difference.changes;
    if (changes.empty())
        return withoutChangesText(result);
    return fmt::format("{} ({}) {}", counted(changes.size(), "change"),
                       classesText(result.counts()), agentsText(result));
}

std::vector<std::string> leftOutTexts(DiffResult const& result) {
    std::vector<std::string> texts;
    if (result.lesser > 0)
        texts.push_back(
            fmt::format("{} of a lesser class left out", counted(result.lesser, "change")));
    if (result.following > 0)
        texts.push_back(fmt::format("{} left out that only {} from others; see --verbose",
                                    counted(result.following, "change"),
                                    result.following == 1 ? "follows" : "follow"));
    return texts;
}

void leaveOut(DiffResult& result, ChangeClass least, bool withFollowing) {
    auto& changes = result.difference.changes;
    result.lesser +=
        std::erase_if(changes, [least](Change const& change) { return change.severity < least; });
    if (!withFollowing)
        result.following +=
            std::erase_if(changes, [](Change const& change) { return change.follows; });
}

} // namespace KeldaTool
