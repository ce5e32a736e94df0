// Aliases that nobody uses, and aliases that are defined twice.
#include "StaticChecks.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <optional>
#include <unordered_map>
#include <unordered_set>

#include <fmt/format.h>

#include "database/findings/FindingList.h"
#include "database/paths/WrittenLine.h"

namespace KeldaDatabase {
namespace {

// What every profile has without an alias line.
constexpr std::array<std::string_view, 5> predefined = {"%cellid", "%peercellid", "%sysname",
                                                        "%sliceid", "%agentstring"};

Subject nameOf(Alias const& alias) {
    return {Subject::behindColon, std::string(alias.name.view())};
}

// Loading reports other names as a fault.
bool hasValidName(Alias const& alias) {
    auto const name = alias.name.view();
    return name.size() > 1 && name[0] == '%' &&
           std::isalpha(static_cast<unsigned char>(name[1])) != 0 && tokensIn(name).size() == 1 &&
           tokensIn(name).front() == name;
}

// The aliases, in lower case, of path lines that were refused before their aliases were looked up.
std::unordered_set<std::string> refusedUses(Device const& device, Profile const& profile) {
    std::unordered_set<std::string> names;
    for (auto i = profile.mounts.begin; i < profile.mounts.end; ++i)
        if (device.mounts[i].isRefused)
            for (auto const& token : tokensIn(device.mounts[i].path.view()))
                names.insert(lowerCase(token));
    return names;
}

// The aliases of one profile, line by line.
class AliasesOfProfile {
  public:
    AliasesOfProfile(Device const& device, Profile const& profile)
        : device_(device), profile_(profile) {}

    void findUnused(FindingList& findings) {
        // From below, so that what a definition is replaced by is known.
        std::unordered_map<Rook::String, Alias const*> later;
        std::vector<std::pair<Alias const*, Alias const*>> unused;
        for (auto i = profile_.aliases.end; i-- > profile_.aliases.begin;) {
            auto const& alias = device_.aliases[i];
            auto const* const replacement = std::exchange(later[alias.name.toLower()], &alias);
            if (!isUsed(alias))
                unused.emplace_back(&alias, replacement);
        }
        for (auto entry = unused.rbegin(); entry != unused.rend(); ++entry)
            tellUnused(findings, *entry->first, entry->second);
    }

    void findRedefined(FindingList& findings) const {
        std::unordered_map<Rook::String, Alias const*> first;
        for (auto i = profile_.aliases.begin; i < profile_.aliases.end; ++i) {
            auto const& alias = device_.aliases[i];
            auto const [entry, isFirst] = first.try_emplace(alias.name.toLower(), &alias);
            if (!hasValidName(alias))
                continue;
            if (!isFirst)
                tellRedefined(findings, alias, *entry->second);
            else if (std::ranges::find(predefined, entry->first.view()) != predefined.end())
                tellHidden(findings, alias);
        }
    }

  private:
    bool isUsed(Alias const& alias) {
        if (alias.isToken || alias.uses != 0 || !hasValidName(alias))
            return true;
        if (!refusedUses_)
            refusedUses_ = refusedUses(device_, profile_);
        return refusedUses_->contains(lowerCase(alias.name.view()));
    }

    static void tellUnused(FindingList& findings, Alias const& alias, Alias const* replacement) {
        auto* const finding = findings.at(alias.place, alias.profile);
        if (finding == nullptr)
            return;
        finding->subject = nameOf(alias);
        if (replacement == nullptr) {
            finding->message = fmt::format("alias '{}' is never used", alias.name);
            return;
        }
        finding->message =
            fmt::format("alias '{}' is not used before it is defined again", alias.name);
        finding->related.push_back({replacement->place, "defined again here"});
    }

    static void tellRedefined(FindingList& findings, Alias const& alias, Alias const& first) {
        auto* const finding = findings.at(alias.place, alias.profile, alias.name);
        if (finding == nullptr)
            return;
        finding->subject = nameOf(alias);
        if (alias.isToken) {
            finding->message = fmt::format(
                "token '{}' stands in the agent name twice: the last one counts", alias.name);
            return;
        }
        finding->message = first.isToken
                               ? fmt::format("alias '{}' replaces a token of the agent name for "
                                             "the lines that follow",
                                             alias.name)
                               : fmt::format("alias '{}' is defined again: the lines that follow "
                                             "have this value",
                                             alias.name);
        finding->related.push_back(
            {first.place, first.isToken ? "the agent name stands here" : "first defined here"});
    }

    static void tellHidden(FindingList& findings, Alias const& alias) {
        auto* const finding = findings.at(alias.place, alias.profile, alias.name);
        if (finding == nullptr)
            return;
        finding->subject = nameOf(alias);
        finding->message =
            fmt::format("{} '{}' hides the alias of this name that every profile has",
                        alias.isToken ? "token" : "alias", alias.name);
    }

    Device const& device_;
    Profile const& profile_;
    std::optional<std::unordered_set<std::string>> refusedUses_;
};

} // namespace

std::vector<Finding> unusedAliases(Device const& device) {
    FindingList findings(device, RuleId::aliasUnused);
    for (auto const& profile : device.profiles)
        AliasesOfProfile(device, profile).findUnused(findings);
    return findings.take();
}

std::vector<Finding> redefinedAliases(Device const& device) {
    FindingList findings(device, RuleId::aliasRedefined);
    for (auto const& profile : device.profiles)
        AliasesOfProfile(device, profile).findRedefined(findings);
    return findings.take();
}

} // namespace KeldaDatabase
