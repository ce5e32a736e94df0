#include "AgentReplay.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace KeldaDatabase {
namespace {

// What stands for the agent string.
constexpr char const* anyValue = "*";

Kelda::LineBuffer bufferOf(std::string_view text) {
    Kelda::LineBuffer line{};
    text.substr(0, line.size() - 1).copy(line.data(), line.size() - 1);
    return line;
}

} // namespace

AgentReplay::AgentReplay(Device const& device)
    : MountFileInfo(false, "/nonexistent", "/nonexistent", ""), device_(device) {}

Rook::String AgentReplay::evaluateAliasValue(Rook::String const& token) {
    if (token.find("%") == Rook::String::npos)
        return token;
    return lookupAlias(token).value_or(Rook::String());
}

AgentReplay::Settings AgentReplay::settingsOf(Agent const& agent, bool isActive) {
    clearProfileData();
    rootFlags_ = connectionFlags_ = Rook::String();
    subAgents_.clear();
    allProfilesLoaded_ = true;
    Settings settings;
    bool isComplete = false; // the defaults are added before the default groups are read
    for (auto const id : agent.profiles) {
        auto const& profile = device_.profiles[id];
        if (profile.isDefaultGroup() && !std::exchange(isComplete, true))
            rootFlags_ = addDefaultRootFlags(rootFlags_);
        for (auto i = profile.keywords.begin; i < profile.keywords.end; ++i)
            handle(device_.keywords[i], i, settings);
    }
    if (!isComplete)
        rootFlags_ = addDefaultRootFlags(rootFlags_);
    activeMountSeen_ = isActive;
    if (!rootFlags_.empty()) // as a default group may leave them
        maybeAddPassiveRootFlag();
    settings.rootFlags = rootFlags_;
    settings.connectionFlags = connectionFlags_;
    settings.subAgents = subAgents_;
    return settings;
}

void AgentReplay::handle(Keyword const& keyword, std::size_t index, Settings& settings) {
    auto const former = exceptions_.size();
    auto const isValid = [&] { return exceptions_.size() == former; };
    if (keyword.keyword == "rootFlags:") {
        handleRootFlagsLine(bufferOf(keyword.line));
        if (isValid())
            settings.rootLine = index;
    } else if (keyword.keyword == "connectionFlags:") {
        handleConnectionFlagsLine(bufferOf(keyword.line));
        if (isValid())
            settings.connectionLine = index;
    } else if (keyword.keyword == "subAgent:") {
        if (keyword.profile != none)
            bindAliases(device_.profiles[keyword.profile], keyword);
        handleSubAgentLine(bufferOf(keyword.line));
        settings.subAgentLines.push_back(index);
    }
    exceptions_.clear();
}

// The aliases that a keyword line sees.
void AgentReplay::bindAliases(Profile const& profile, Keyword const& keyword) {
    perFileAliases_.clear();
    perFileAliasesPushBack("%agentString", anyValue);
    for (auto i = profile.aliases.begin; i < profile.aliases.end; ++i)
        if (device_.aliases[i].place.line < keyword.place.line)
            perFileAliasesPushBack(device_.aliases[i].name, device_.aliases[i].value);
}

Kelda::MountArgsMap const& AgentReplay::recordsOf(std::vector<std::size_t> const& mounts,
                                                  Rook::String const& rootFlags) {
    clearProfileData();
    rootFlags_ = rootFlags;
    activeMountSeen_ = true;
    allProfilesLoaded_ = true;
    for (auto const index : mounts) {
        auto const& mount = device_.mounts[index];
        currentFiles_.push_back({device_.files[mount.place.file].name, mount.place.line});
        recordMountArgsInternal(mount.path, {mount.type, mount.flags}, true);
        currentFiles_.clear();
    }
    inheritParentFlags();
    exceptions_.clear();
    return pathMountArgsMap_;
}

} // namespace KeldaDatabase
