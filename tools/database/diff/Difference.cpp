// Compares two devices.
#include "Difference.h"

#include <algorithm>
#include <utility>

#include "AgentDifference.h"
#include "PreinitDifference.h"

namespace KeldaDatabase {
namespace {

std::size_t plainAgents(Device const& device) {
    return static_cast<std::size_t>(
        std::count_if(device.agents.begin(), device.agents.end(),
                      [](Agent const& agent) { return !agent.isActiveVariant; }));
}

} // namespace

Difference differenceOf(DatabaseMountFileInfo& before, DatabaseMountFileInfo& after) {
    DeviceSide old(before);
    DeviceSide now(after);
    Causes causes(old, now);
    std::vector<FoundChange> found;
    addPreinitChanges(old, now, causes, found);
    AgentDifference(old, now, causes, found).compareAll();
    return {grouped(std::move(found), old, now), plainAgents(old.device()),
            plainAgents(now.device())};
}

} // namespace KeldaDatabase
