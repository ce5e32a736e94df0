#include "MountsTable.h"

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

std::string totals(MountsAnswer const& answer) {
    auto const all = answer.mounts.size();
    auto const named = static_cast<std::size_t>(
        std::count_if(answer.mounts.begin(), answer.mounts.end(),
                      [](Mount const& mount) { return mount.isExplicit; }));
    return fmt::format("{} ({} explicit, {} intermediate) in {} from {}\n", counted(all, "mount"),
                       named, all - named, counted(answer.groups.size(), "group"),
                       counted(answer.files.size(), "file"));
}

} // namespace

std::string mountsTable(MountsAnswer const& answer, bool colour) {
    return tableOf(answer).text(colour) + "\n" + agentSentence(answer) + totals(answer);
}

} // namespace KeldaTool
