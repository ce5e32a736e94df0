#include "DatabaseMountFileInfo.h"

#include <algorithm>
#include <utility>

#include <Fen/Exception.h>
#include <fmt/format.h>

#include "AgentFaults.h"
#include "Agents.h"
#include "database/checks/StaticChecks.h"
#include "database/findings/FaultFindings.h"

namespace KeldaDatabase {
namespace {

// What stands for a value that only an agent string gives.
constexpr char const* anyValue = "*";
constexpr char const* tokenMark = "-%";

// The name as a file name pattern that matches nothing else.
std::string literalPattern(std::string_view name) {
    std::string pattern;
    for (char const c : name)
        if (c == '*' || c == '?' || c == '[')
            pattern.append({'[', c, ']'});
        else
            pattern += c;
    return pattern;
}

} // namespace

DatabaseMountFileInfo::DatabaseMountFileInfo(Rook::String preinitDir,
                                             Rook::String keldaMountProfileDir,
                                             Rook::String defaultGroupName)
    : MountFileInfo(false, std::move(preinitDir), std::move(keldaMountProfileDir),
                    std::move(defaultGroupName)) {
    loadObserverIs(&recorder_);
}

DatabaseMountFileInfo::~DatabaseMountFileInfo() = default;

void DatabaseMountFileInfo::addProfile(Rook::String const& name) {
    added_.push_back(name);
}

void DatabaseMountFileInfo::setExclusionRegex(std::regex const& expression) {
    exclusionRegex_ = expression;
}

void DatabaseMountFileInfo::setForceNoDefaultMountGroup() {
    forceNoDefaultMountGroup_ = true;
}

void DatabaseMountFileInfo::setWaitForActiveReady() {
    waitForActiveReady_ = true;
}

void DatabaseMountFileInfo::staticCheckIs(bool on) {
    staticCheck_ = on;
    findingsAreMade_ = false;
}

void DatabaseMountFileInfo::doInit() {
    if (isInitialized_)
        return;
    forget();
    device_.preinitDirectory = preinitDir_.view();
    device_.profileDirectory = keldaMountProfileDir_.view();
    isLoading_ = true;
    doLoadPreinits();
    recorder_.preinitsAreLoaded();
    loadProfiles(keldaMountProfileDir_);
    if (!extraProfileDir_.empty())
        loadProfiles(extraProfileDir_);
    if (!forceNoDefaultMountGroup_) {
        loadDefaultGroup(defaultGroupName_, Profile::Kind::defaultGroup);
        loadDefaultGroup(defaultGroupName_ + "PerAgent", Profile::Kind::defaultGroupPerAgent);
        if (waitForActiveReady_)
            loadDefaultGroup(defaultGroupName_ + "Standby", Profile::Kind::standbyGroup);
    }
    isLoading_ = false;
    sortMountGroups();
    allProfilesLoaded_ = true;
    settleFaults();
    handleDoInit();
}

void DatabaseMountFileInfo::loadProfiles(Rook::String const& directory) {
    auto const load = static_cast<FileLoader>(&DatabaseMountFileInfo::loadProfile);
    if (added_.empty())
        mapDir(directory, load, nullptr, &profileFileCheck_);
    for (auto const& name : added_)
        mapDir(directory, load, literalPattern(name).c_str(), &profileFileCheck_);
}

// Loads an open file if it is a profile of some agent; returns profileLoader's count.
int DatabaseMountFileInfo::loadProfile(FILE* file) {
    Kelda::LineBuffer buffer{};
    char const* const agentName = getAgentNameFromProfile(file, buffer);
    if (agentName == nullptr)
        return 0;
    beginProfile(Profile::Kind::agent);
    bindTokens(agentName);
    // As an agent's own parser finds the keyword: it need not be one to whoever reads the lines.
    bool const takesRest = std::string_view(agentName).find('$') != std::string_view::npos;
    device_.profiles.back().saysMatchActiveName = findMatchActiveName(file, takesRest);
    perFileAliasesPushBack("%agentString", anyValue);
    auto const profiles = profileLoader(file);
    recorder_.profileEnds();
    return profiles;
}

// The keywords of one profile say nothing about the next; see faultsTogether.
void DatabaseMountFileInfo::beginProfile(Profile::Kind kind) {
    activeMountSeen_ = false;
    matchActiveNameSeen_ = false;
    conditionSeen_ = false;
    resetFileContext();
    recorder_.profileBegins(kind, currentFiles_);
}

void DatabaseMountFileInfo::bindTokens(Rook::String const& agentName) {
    auto const pieces = tokenize(agentName, tokenMark);
    bool const hasTokens = agentName.find(tokenMark) != Rook::String::npos;
    agentKey_ = hasTokens ? agentName.substr(0, agentName.find(tokenMark)) : agentName;
    recorder_.agentNameIs(agentName, agentKey_);
    for (std::size_t i = 1; i < pieces.size(); ++i) {
        bool const takesRest = i + 1 == pieces.size() && pieces[i].endsWith("$");
        auto const token = pieces[i].substr(0, pieces[i].size() - (takesRest ? 1 : 0));
        auto const value = numberedTokens_ ? fmt::format("%{}", i) : anyValue;
        recordAgentNameTokenAlias("%" + token, value, takesRest);
    }
}

void DatabaseMountFileInfo::loadDefaultGroup(Rook::String const& fileName, Profile::Kind kind) {
    beginProfile(kind);
    currentMountGroup_ = "default";
    agentKey_ = anyValue;
    perFileAliasesPushBack("%agentString", anyValue);
    auto const load = static_cast<FileLoader>(&DatabaseMountFileInfo::profileLoader);
    int files = 0;
    if (!extraProfileDir_.empty())
        files = mapDir(extraProfileDir_, load, fileName.c_str(), nullptr);
    if (files == 0)
        mapDir(keldaMountProfileDir_, load, fileName.c_str(), nullptr);
    recorder_.profileEnds();
    resetFileContext();
}

// Puts the faults that only profiles read together have in the place of those that came about
// because all profiles were read by one parser.
void DatabaseMountFileInfo::settleFaults() {
    device_.agents = agentsOf(device_);
    auto const former = exceptions_.size() - device_.faults.size();
    auto together = faultsTogether(device_, pathMountArgsMap_);
    std::erase_if(device_.faults, [](Fault const& fault) {
        return hangsOnFormerLines(fault.exception.msg.view());
    });
    std::move(together.begin(), together.end(), std::back_inserter(device_.faults));
    exceptions_.resize(former);
    for (auto const& fault : device_.faults)
        exceptions_.push_back(fault.exception);
}

void DatabaseMountFileInfo::unDoInit() {
    MountFileInfo::unDoInit();
    if (!isInitialized_)
        forget();
}

void DatabaseMountFileInfo::clearProfileData() {
    MountFileInfo::clearProfileData();
    forget();
}

void DatabaseMountFileInfo::forget() {
    device_ = Device();
    std::destroy_at(&recorder_);
    std::construct_at(&recorder_, device_, progress_);
    findings_.clear();
    findingsAreMade_ = false;
}

Rook::String DatabaseMountFileInfo::agentName() {
    doInit();
    auto const isAgents = [](Profile const& profile) { return !profile.isDefaultGroup(); };
    auto const count = std::ranges::count_if(device_.profiles, isAgents);
    if (count != 1)
        throw Fen::AgentException(
            fmt::format("agentName: {} profiles are loaded, and not a single one", count));
    return std::ranges::find_if(device_.profiles, isAgents)->agentName;
}

Device const& DatabaseMountFileInfo::device() {
    doInit();
    return device_;
}

std::vector<Finding> const& DatabaseMountFileInfo::findings() {
    doInit();
    if (std::exchange(findingsAreMade_, true))
        return findings_;
    findings_ = faultFindings(device_);
    if (staticCheck_) {
        auto more = staticFindings(device_);
        std::move(more.begin(), more.end(), std::back_inserter(findings_));
    }
    if (!added_.empty())
        // Profiles that were not loaded may well mount and write what those that were do not.
        std::erase_if(findings_, [](Finding const& finding) {
            return finding.rule == RuleId::preinitNeverMounted ||
                   finding.rule == RuleId::readNeverWritten;
        });
    return findings_;
}

std::vector<Finding> DatabaseMountFileInfo::takeFindings() {
    findings();
    findingsAreMade_ = false;
    return std::exchange(findings_, {});
}

Rook::String DatabaseMountFileInfo::evaluateAliasValue(Rook::String const& token) {
    if (token.find("%") == Rook::String::npos)
        return token;
    if (auto const value = lookupAlias(token))
        return *value;
    reportAndTrace("No such alias defined: '" + token + "'");
    return {};
}

void DatabaseMountFileInfo::maybeThrow(Rook::String const& message) const {
    MountFileInfo::maybeThrow(message);
    if (!isLoading_)
        return;
    recorder_.faultFound(exceptions_.back(), currentFiles_);
    if (message.startsWith("Invalid flags "))
        recorder_.lastMountIsRefused();
}

std::optional<Rook::String> DatabaseMountFileInfo::excuseMissingType(std::ostringstream& message,
                                                                     char const* type) const {
    if (inConditionalGroup_)
        message << " Allowed since conditional mountgroup.";
    else if (!defaultPreinitsLoaded_)
        message << " Allowed since default preinits are overriden.";
    else
        return std::nullopt;
    return Rook::String(type);
}

} // namespace KeldaDatabase
