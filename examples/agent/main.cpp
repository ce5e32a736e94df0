// A small agent: tells which paths of the database it mounts, and which paths are configuration.
//
//     agent AGENT [PREINIT_DIRECTORY [PROFILE_DIRECTORY]]
//
// The directories are the system's when none are named. The exit status is 0 when all is well, 1
// when a file has a fault (or the answer cannot be written), and 2 when the call was wrong.
#include <algorithm>
#include <exception>
#include <iostream>
#include <vector>

#include <Fen/Exception.h>
#include <KeldaBase/AgentMountFileInfoWrap.h>

namespace {

constexpr int allIsWell = 0;
constexpr int fault = 1;
constexpr int wrongCall = 2;

void printMounts(Kelda::AgentMountFileInfoWrap& entity, Rook::String const& agent) {
    // The collection lives as long as somebody holds the pointer, hence the name for it. It is in
    // the order of the paths.
    auto const mounts = entity.getMountPathInfoAll(agent);
    for (auto const& mount : *mounts)
        std::cout << "mount " << mount->path() << ' ' << mount->type() << ' ' << mount->flags()
                  << '\n';
}

void printConfigPaths(Kelda::AgentMountFileInfoWrap& entity) {
    // This collection is in no order, so its values are put into one.
    auto const collection = entity.getConfigPathInfo();
    std::vector<Kelda::ConfigPathInfo> paths(collection->begin(), collection->end());
    std::sort(paths.begin(), paths.end(),
              [](auto const& a, auto const& b) { return a.path() < b.path(); });
    for (auto const& config : paths)
        std::cout << "config " << config.path() << ' ' << config.type() << '\n';
}

int run(Rook::String const& agent, Rook::String const& preinits, Rook::String const& profiles) {
    // Nothing is read yet: the first question makes the entity read its files, all at once. From
    // then on it answers from memory. Empty directories stand for the system's own.
    auto const entity =
        Kelda::agentMountFileInfoWrapFactory(false, agent, "", preinits, profiles, true);
    printMounts(*entity, agent);
    printConfigPaths(*entity);
    std::cout.flush();
    if (std::cout)
        return allIsWell;
    std::cerr << "agent: cannot write the answer\n";
    return fault;
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 2 || argc > 4) {
        std::cerr << "usage: agent AGENT [PREINIT_DIRECTORY [PROFILE_DIRECTORY]]\n";
        return wrongCall;
    }
    try {
        return run(argv[1], argc > 2 ? argv[2] : "", argc > 3 ? argv[3] : "");
    } catch (Fen::AgentException const& exception) {
        // A fault in a file, with the file, the line and what is wrong there. An agent that must
        // run all the same would go on without these mounts.
        std::cerr << "agent: " << exception.what() << '\n';
    } catch (std::exception const& exception) {
        std::cerr << "agent: unexpected: " << exception.what() << '\n';
    }
    return fault;
}
