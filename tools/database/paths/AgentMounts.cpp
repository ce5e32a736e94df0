#include "AgentMounts.h"

#include <algorithm>

#include <KeldaUtil/MountFlags.h>

namespace KeldaDatabase {
namespace {

Fen::MountTable::Flags flagOf(char const* letter) {
    return KeldaUtil::parseMountTableFlags(letter);
}

bool holds(Fen::MountTable::Flags flags, Fen::MountTable::Flags wanted) {
    return (flags & wanted) == wanted;
}

// The lines of one path, as one mount. Lines of another type are taken out of the list.
AgentMount mountOf(Device const& device, std::vector<std::size_t>& lines) {
    auto const& first = device.mounts[lines.front()];
    std::erase_if(lines, [&](std::size_t line) { return device.mounts[line].type != first.type; });
    AgentMount mount{first.path, first.type, {}, lines};
    for (auto const line : lines)
        mount.flags = KeldaUtil::safelyMergeFlags(mount.flags, device.mounts[line].flags);
    return mount;
}

} // namespace

bool reads(Fen::MountTable::Flags flags) {
    static auto const read = flagOf("r");
    return holds(flags, read);
}

bool writes(Fen::MountTable::Flags flags) {
    static auto const write = flagOf("w");
    return holds(flags, write);
}

AgentMounts::AgentMounts(Device const& device, Wanted const& wanted) : device_(device) {
    for (std::size_t i = 0; i < device.mounts.size(); ++i)
        if (isMounted(device.mounts[i]) && (!wanted || wanted(device.mounts[i].path)))
            lines_.push_back(i);
}

std::vector<std::size_t> AgentMounts::linesOf(Agent const& agent) const {
    std::vector<std::size_t> lines;
    for (auto const id : agent.profiles) {
        auto const& range = device_.profiles[id].mounts;
        auto const begin = std::lower_bound(lines_.begin(), lines_.end(), range.begin);
        lines.insert(lines.end(), begin, std::lower_bound(begin, lines_.end(), range.end));
    }
    return lines;
}

void AgentMounts::visit(Agent const& agent, Visit const& visit) const {
    // Equal paths share their characters, so where these stand tells paths apart.
    auto const isBefore = [this](std::size_t a, std::size_t b) {
        return std::less<>()(device_.mounts[a].path.c_str(), device_.mounts[b].path.c_str());
    };
    auto lines = linesOf(agent);
    std::stable_sort(lines.begin(), lines.end(), isBefore);
    std::vector<std::size_t> ofPath;
    for (auto begin = lines.begin(); begin != lines.end();) {
        auto const end = std::upper_bound(begin, lines.end(), *begin, isBefore);
        ofPath.assign(begin, end);
        visit(mountOf(device_, ofPath));
        begin = end;
    }
}

} // namespace KeldaDatabase
