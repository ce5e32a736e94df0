#include "Loads.h"

namespace bench {

namespace {

// The aliases that the library gives every file.
PlainLoader::Strings predefinedAliases() {
    PlainLoader::Strings aliases;
    LenientLoad const library("", "");
    for (auto const& [key, value] : library.predefinedAliases())
        aliases.emplace(key.view(), value.view());
    return aliases;
}

std::unique_ptr<PlainLoader> plainLoader(Directories const& directories) {
    static auto const aliases = predefinedAliases();
    return std::make_unique<PlainLoader>(directories.preinit, directories.profiles, aliases);
}

} // namespace

std::unique_ptr<LenientLoad> loadByLibrary(Directories const& directories) {
    auto parser = std::make_unique<LenientLoad>(directories.preinit, directories.profiles);
    parser->doInit();
    // The library puts the lists of files in order when they are first asked for.
    parser->profileFilePathsMap();
    return parser;
}

std::unique_ptr<PlainLoader> loadPlainly(Directories const& directories) {
    auto loader = plainLoader(directories);
    loader->loadEverything();
    return loader;
}

std::unique_ptr<AgentParser> startAgentByLibrary(Directories const& directories,
                                                 std::string const& agentString) {
    auto parser = std::make_unique<AgentParser>(false, directories.preinit, directories.profiles,
                                                true, "DefaultMountGroup");
    parser->addAgent(agentString, "");
    parser->doInit();
    parser->profileFilePathsMap();
    return parser;
}

std::unique_ptr<PlainLoader> startAgentPlainly(Directories const& directories,
                                               std::string const& agentString) {
    auto loader = plainLoader(directories);
    loader->loadAgent(agentString);
    return loader;
}

} // namespace bench
