#include "mounts/MountsTable.h"

#include <algorithm>
#include <unordered_map>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "Table.h"
#include "Text.h"

namespace KeldaTool {
namespace {

// The names of the lists that each path is in, as one text.
class ListsByPath {
  public:
    explicit ListsByPath(MountsAnswer::Lists const& lists) {
        for (auto const& [name, paths] : lists)
            for (auto const& path : paths)
                add(path, name);
    }
    std::string const& of(std::string const& path) { return names_[path]; }

  private:
    // A list may hold a path more than once.
    void add(std::string const& path, std::string const& name) {
        auto& last = last_[path];
        if (last == &name)
            return;
        auto& names = names_[path];
        names += (names.empty() ? "" : ", ") + name;
        last = &name;
    }
    std::unordered_map<std::string, std::string> names_;
    std::unordered_map<std::string, std::string const*> last_;
};

Table tableOf(MountsAnswer const& answer) {
    ListsByPath groups(answer.groups);
    ListsByPath files(answer.files);
    Table table({"PATH", "TYPE", "FLAGS", "KIND", "GROUPS", "FILES"});
    for (auto const& mount : answer.mounts)
        table.addRow({mount.path, mount.type, mount.flags,
                      mount.isExplicit ? "explicit" : "intermediate", groups.of(mount.path),
                      files.of(mount.path)},
                     mount.isExplicit ? Table::Emphasis::normal : Table::Emphasis::faint);
    return table;
}

std::string flagsOf(std::string_view what, std::string const& flags) {
    return flags.empty() ? fmt::format("no {} flags", what)
                         : fmt::format("{} flags {}", what, printable(flags));
}

std::string agentSentence(MountsAnswer const& answer) {
    auto text =
        fmt::format("Agent {}: {} mounts, {}, {}", printable(answer.agent),
                    answer.activeMount ? "active" : "passive", flagsOf("root", answer.rootFlags),
                    flagsOf("connection", answer.connectionFlags));
    if (answer.noDefaultMountGroup)
        text += ", no default mount group";
    if (!answer.subAgents.empty())
        text += ", sub-agents " + printable(fmt::format("{}", fmt::join(answer.subAgents, ", ")));
    return text + "\n";
}

// "2 mounts (1 explicit, 1 intermediate)"
std::string countedMounts(std::vector<Mount> const& mounts) {
    auto const named = static_cast<std::size_t>(std::count_if(
        mounts.begin(), mounts.end(), [](Mount const& mount) { return mount.isExplicit; }));
    return fmt::format("{} ({} explicit, {} intermediate)", counted(mounts.size(), "mount"), named,
                       mounts.size() - named);
}

std::string totals(MountsAnswer const& answer) {
    return fmt::format("{} in {} from {}\n", countedMounts(answer.mounts),
                       counted(answer.groups.size(), "group"),
                       counted(answer.files.size(), "file"));
}

std::string placeOf(MountsAnswer const& answer, MountsSelection const& selection) {
    auto const name = printable(answer.selected);
    if (selection.by == MountsSelection::By::path)
        return "at path " + name;
    if (selection.by == MountsSelection::By::group)
        return "in group " + name;
    bool const isPattern = selection.name.ends_with('*');
    auto const place = (isPattern ? "from files " : "from file ") + name;
    return selection.withIncludes
               ? place + (isPattern ? " and what they include" : " and what it includes")
               : place;
}

std::string selectionTotals(MountsAnswer const& answer, MountsSelection const& selection) {
    return fmt::format("Agent {}: {} {}\n", printable(answer.agent), countedMounts(answer.mounts),
                       placeOf(answer, selection));
}

} // namespace

std::string mountsTable(MountsAnswer const& answer, MountsSelection const& selection, bool colour) {
    auto const table = tableOf(answer).text(colour) + "\n";
    if (selection.by == MountsSelection::By::nothing)
        return table + agentSentence(answer) + totals(answer);
    return table + selectionTotals(answer, selection);
}

} // namespace KeldaTool
