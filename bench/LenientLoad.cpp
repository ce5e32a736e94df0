#include "LenientLoad.h"

namespace bench {

LenientLoad::LenientLoad(std::string const& preinitDir, std::string const& profileDir)
    : MountFileInfo(false, preinitDir, profileDir, "DefaultMountGroup") {}

LenientLoad::~LenientLoad() = default;

void LenientLoad::doInit() {
    if (isInitialized_)
        return;
    doLoadPreinits();
    mapDir(keldaMountProfileDir_, &MountFileInfo::profileSearcher, nullptr, &profileFileCheck_);
    agentKey_ = "";
    loadDefaultGroup(defaultGroupName_);
    loadDefaultGroup(defaultGroupName_ + "PerAgent");
    allProfilesLoaded_ = true;
    handleDoInit();
}

int LenientLoad::profileSearcher(FILE* file) {
    Kelda::LineBuffer buffer{};
    char const* const agentName = getAgentNameFromProfile(file, buffer);
    if (agentName == nullptr)
        return 0;
    // Keywords of one agent say nothing about the next.
    activeMountSeen_ = matchActiveNameSeen_ = conditionSeen_ = false;
    bindTokens(agentName);
    perFileAliasesPushBack("%agentString", "*");
    return profileLoader(file);
}

Rook::String LenientLoad::evaluateAliasValue(Rook::String const& token) {
    if (token.find("%") == Rook::String::npos)
        return token;
    if (auto const value = lookupAlias(token))
        return *value;
    reportAndTrace("No such alias defined: '" + token + "'");
    return {};
}

void LenientLoad::bindTokens(Rook::String const& agentName) {
    auto const pieces = tokenize(agentName, "-%");
    agentKey_ = pieces.empty() ? Rook::String() : pieces.front();
    for (std::size_t i = 1; i < pieces.size(); ++i) {
        auto token = "%" + pieces[i];
        bool const consuming = i + 1 == pieces.size() && token.endsWith("$");
        if (consuming)
            token = token.substr(0, token.size() - 1);
        recordAgentNameTokenAlias(token, "*", consuming);
    }
}

void LenientLoad::loadDefaultGroup(Rook::String const& name) {
    currentMountGroup_ = "default";
    perFileAliasesPushBack("%agentString", "*");
    mapDir(keldaMountProfileDir_, &MountFileInfo::profileLoader, name.c_str(), nullptr);
    resetFileContext();
}

} // namespace bench
