// Puts equal changes of several paths and agents together.
#include <algorithm>
#include <map>
#include <tuple>
#include <utility>

#include "FoundChange.h"

namespace KeldaDatabase {
namespace {

using PlainLine = std::pair<FileId, std::int32_t>;

std::vector<PlainLine> plain(std::vector<CausingLine> const& lines) {
    std::vector<PlainLine> result;
    for (auto const& line : lines)
        result.emplace_back(line.file, line.line);
    std::sort(result.begin(), result.end());
    return result;
}

using Key = std::tuple<ChangeKind, ChangeClass, ChangeCause, bool, std::vector<PlainLine>,
                       std::vector<PlainLine>, std::string, std::string>;

Key keyOf(FoundChange const& found) {
    return {found.kind,
            found.severity,
            found.cause.cause,
            found.follows,
            plain(found.cause.before),
            plain(found.cause.after),
            found.before,
            found.after};
}

// The Include lines that led to each place of a change.
class Routes {
  public:
    void add(std::vector<CausingLine> const& lines) {
        for (auto const& line : lines) {
            auto const [entry, added] = routes_.try_emplace({line.file, line.line}, line.include);
            if (!added && entry->second != line.include)
                entry->second = none;
        }
    }
    IncludeId of(PlainLine const& line) const { return routes_.at(line); }

  private:
    std::map<PlainLine, IncludeId> routes_;
};

struct Gathered {
    Routes before, after;
    std::map<std::string, ChangedPath> paths;
    std::vector<ChangedMount> mounts;

    void add(FoundChange&& found) {
        before.add(found.cause.before);
        after.add(found.cause.after);
        auto& path = paths[found.path];
        if (found.kind <
            ChangeKind::preinitAdded) // those are no agent's; an agent may have no name
            path.agents.push_back(std::move(found.agent));
        path.type = std::max(path.type, found.type);
        std::move(found.mounts.begin(), found.mounts.end(), std::back_inserter(mounts));
    }
};

StoryPlace told(DeviceSide& side, PlainLine const& line, IncludeId include) {
    auto const file = side.device().files[line.first].path();
    StoryPlace place{file, line.second, {}, ""};
    place.text = logicalLine(side.places().textOf(file), line.second).text;
    if (include != none) {
        auto const by = side.places().told(side.device().includes[include].place);
        place.from.push_back({by.file, by.line});
    }
    return place;
}

auto orderOf(StoryPlace const& place) {
    return std::tie(place.file, place.line);
}

std::vector<StoryPlace> told(DeviceSide& side, std::vector<PlainLine> const& lines,
                             Routes const& routes) {
    std::vector<StoryPlace> places;
    for (auto const& line : lines)
        places.push_back(told(side, line, routes.of(line)));
    std::sort(places.begin(), places.end(),
              [](auto const& a, auto const& b) { return orderOf(a) < orderOf(b); });
    return places;
}

std::vector<ChangedPath> sortedPaths(std::map<std::string, ChangedPath>&& paths) {
    std::vector<ChangedPath> sorted;
    for (auto& [path, changed] : paths) {
        changed.path = path;
        std::sort(changed.agents.begin(), changed.agents.end());
        changed.agents.erase(std::unique(changed.agents.begin(), changed.agents.end()),
                             changed.agents.end());
        sorted.push_back(std::move(changed));
    }
    return sorted;
}

Change changeOf(Key const& key, Gathered&& group, DeviceSide& before, DeviceSide& after) {
    Change change;
    std::vector<PlainLine> oldLines, newLines;
    std::tie(change.kind, change.severity, change.cause, change.follows, oldLines, newLines,
             change.before, change.after) = key;
    change.oldPlaces = told(before, oldLines, group.before);
    change.newPlaces = told(after, newLines, group.after);
    change.paths = sortedPaths(std::move(group.paths));
    change.mounts = std::move(group.mounts);
    std::sort(change.mounts.begin(), change.mounts.end(), [](auto const& a, auto const& b) {
        return std::tie(a.agent, a.path) < std::tie(b.agent, b.path);
    });
    return change;
}

bool placesBefore(std::vector<StoryPlace> const& a, std::vector<StoryPlace> const& b) {
    return std::lexicographical_compare(
        a.begin(), a.end(), b.begin(), b.end(),
        [](auto const& x, auto const& y) { return orderOf(x) < orderOf(y); });
}

bool isBefore(Change const& a, Change const& b) {
    if (a.severity != b.severity)
        return a.severity > b.severity;
    auto const order = [](Change const& change) {
        return std::tie(change.kind, change.paths.front().path);
    };
    if (order(a) != order(b))
        return order(a) < order(b);
    for (auto const places : {&Change::oldPlaces, &Change::newPlaces})
        if (placesBefore(a.*places, b.*places) || placesBefore(b.*places, a.*places))
            return placesBefore(a.*places, b.*places);
    auto const rest = [](Change const& change) {
        return std::tie(change.before, change.after, change.cause, change.follows,
                        change.paths.front().agents);
    };
    return rest(a) < rest(b);
}

} // namespace

std::vector<Change> grouped(std::vector<FoundChange> found, DeviceSide& before, DeviceSide& after) {
    std::map<Key, Gathered> groups;
    for (auto& each : found)
        groups[keyOf(each)].add(std::move(each));
    std::vector<Change> changes;
    for (auto& [key, group] : groups)
        changes.push_back(changeOf(key, std::move(group), before, after));
    std::sort(changes.begin(), changes.end(), isBefore);
    return changes;
}

} // namespace KeldaDatabase
