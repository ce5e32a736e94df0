#include "StaticChecks.h"

#include <iterator>
#include <utility>

#include "PathChecks.h"

namespace KeldaDatabase {

std::vector<Finding> staticFindings(Device const& device) {
    std::vector<Finding> all;
    auto const append = [&all](std::vector<Finding> findings) {
        std::move(findings.begin(), findings.end(), std::back_inserter(all));
    };
    append(agentsMatchedTwice(device));
    append(orphanFiles(device));
    append(includesThatMatchNothing(device));
    append(unusedAliases(device));
    append(redefinedAliases(device));
    append(pathsMountedTwice(device));
    append(differingTypeColumns(device));
    append(emptyGroups(device));
    PathTree const tree(device);
    append(redefinedPreinitTypes(device, tree));
    append(preinitsNeverMounted(device, tree));
    append(pathsNeverWritten(device, tree));
    append(namesDifferingInCase(device, tree));
    return all;
}

} // namespace KeldaDatabase
