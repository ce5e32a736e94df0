#include "report/ReportMounts.h"

#include <algorithm>
#include <numeric>
#include <tuple>

#include <KeldaUtil/MountFlags.h>

#include "Text.h"
#include "database/paths/AgentMounts.h"

namespace KeldaTool {

std::uint32_t NumberedTexts::of(Rook::String const& text) {
    auto const [entry, added] =
        numbers_.try_emplace(text, static_cast<std::uint32_t>(texts_.size()));
    if (added)
        texts_.push_back(text);
    return entry->second;
}

ReportMounts::ReportMounts(KeldaDatabase::Device const& device) {
    gather(device);
    sortByPath();
    numberFlags();
}

// The flags are their bits for now.
void ReportMounts::gather(KeldaDatabase::Device const& device) {
    KeldaDatabase::AgentMounts const mounts(device);
    NumberedTexts paths;
    for (std::uint32_t agent = 0; agent < device.agents.size(); ++agent)
        if (!device.agents[agent].isActiveVariant)
            mounts.visit(device.agents[agent], [&](KeldaDatabase::AgentMount const& mount) {
                mounts_.push_back({agent, paths.of(mount.path), types_.of(mount.type),
                                   mount.flags.bits(), lines_.size(), mount.lines.size()});
                lines_.insert(lines_.end(), mount.lines.begin(), mount.lines.end());
            });
    paths_ = paths.texts();
}

void ReportMounts::sortByPath() {
    std::vector<std::uint32_t> order(paths_.size());
    std::iota(order.begin(), order.end(), 0U);
    std::sort(order.begin(), order.end(),
              [this](auto a, auto b) { return paths_[a].view() < paths_[b].view(); });
    std::vector<Rook::String> sorted;
    std::vector<std::uint32_t> numbers(paths_.size());
    for (auto const former : order) {
        numbers[former] = static_cast<std::uint32_t>(sorted.size());
        sorted.push_back(paths_[former]);
    }
    paths_ = std::move(sorted);
    for (auto& mount : mounts_)
        mount.path = numbers[mount.path];
    std::sort(mounts_.begin(), mounts_.end(), [](ReportMount const& a, ReportMount const& b) {
        return std::tie(a.agent, a.path) < std::tie(b.agent, b.path);
    });
}

void ReportMounts::numberFlags() {
    std::unordered_map<std::uint32_t, std::uint32_t> numbers; // by their bits
    for (auto& mount : mounts_) {
        auto const [entry, added] =
            numbers.try_emplace(mount.flags, static_cast<std::uint32_t>(flags_.size()));
        if (added)
            flags_.push_back(
                textOf(KeldaUtil::mountTableFlagsToString(Fen::MountTable::Flags(mount.flags))));
        mount.flags = entry->second;
    }
}

} // namespace KeldaTool
