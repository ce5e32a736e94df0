// Paths that one profile mounts twice.
#include "StaticChecks.h"

#include <algorithm>
#include <bit>
#include <string>
#include <unordered_map>
#include <utility>

#include <KeldaUtil/MountFlags.h>
#include <fmt/format.h>

#include "database/findings/FindingList.h"
#include "database/paths/WrittenLine.h"

namespace KeldaDatabase {
namespace {

// Which mount of a profile named a path in a file first. Paths are told apart by their shared
// buffers, which are not looked into.
class FirstMounts {
  public:
    explicit FirstMounts(Device const& device) : device_(device) {}

    void begin(std::size_t mounts) { slots_.assign(std::bit_ceil(mounts * 2 + 1), none); }

    // The index itself when there was none before.
    std::uint32_t firstOf(std::uint32_t index) {
        auto const& mount = device_.mounts[index];
        auto const mask = slots_.size() - 1;
        for (auto at = hashOf(mount) >> 20U & mask;; at = (at + 1) & mask) {
            if (slots_[at] == none)
                slots_[at] = index;
            auto const& known = device_.mounts[slots_[at]];
            if (known.path == mount.path && known.place.file == mount.place.file)
                return slots_[at];
        }
    }

  private:
    static std::size_t hashOf(Mount const& mount) {
        auto const buffer = reinterpret_cast<std::uintptr_t>(mount.path.c_str());
        return (buffer + mount.place.file) * 0x9e3779b97f4a7c15U;
    }

    Device const& device_;
    std::vector<std::uint32_t> slots_;
};

std::string_view groupName(Device const& device, Mount const& mount) {
    return mount.group == none ? std::string_view() : device.groups[mount.group].name;
}

std::string flagsText(Mount const& mount) {
    auto const letters = KeldaUtil::mountTableFlagsToString(mount.flags);
    return letters.empty() ? "no flags" : fmt::format("the flags '{}'", letters);
}

class TwiceMounted {
  public:
    explicit TwiceMounted(Device const& device)
        : device_(device), firstMounts_(device), findings_(device, RuleId::pathMountedTwice) {}

    std::vector<Finding> find() {
        for (auto const& profile : device_.profiles)
            findIn(profile);
        return findings_.take();
    }

  private:
    void findIn(Profile const& profile) {
        firstMounts_.begin(profile.mounts.size());
        written_.clear();
        definitions_.clear();
        for (auto i = profile.mounts.begin; i < profile.mounts.end; ++i) {
            auto const index = static_cast<std::uint32_t>(i);
            if (!isMounted(device_.mounts[index]))
                continue;
            if (auto const first = firstMounts_.firstOf(index); first != index)
                meetAgain(profile, first, index);
        }
    }

    void meetAgain(Profile const& profile, std::uint32_t first, std::uint32_t index) {
        auto const& mount = device_.mounts[index];
        // To be in two groups, a path has to be mounted twice. What ConfigMountProfile brings
        // stands in no line that could be changed.
        if (groupName(device_, device_.mounts[first]) != groupName(device_, mount) ||
            isOfInclude(profile, device_.mounts[first]) || isOfInclude(profile, mount))
            return;
        if (mount.path.find("*") != Rook::String::npos)
            first = firstWrittenAlike(profile, first, index);
        if (first == index)
            return;
        if (device_.mounts[first].place.include == mount.place.include)
            tellOfPath(device_.mounts[first], mount);
        else if (mount.place.include != none)
            tellOfInclude(device_.includes[mount.place.include],
                          device_.mounts[first].place.include);
    }

    // Whether the mount stands in the Include line itself, in no file.
    bool isOfInclude(Profile const& profile, Mount const& mount) const {
        for (auto i = profile.includes.begin; i < profile.includes.end; ++i)
            if (device_.includes[i].place == mount.place)
                return true;
        return false;
    }

    // Where a "*" stands for values that only an agent string gives, two lines mount one path for
    // certain only if they are written alike. The index itself when no line is.
    std::uint32_t firstWrittenAlike(Profile const& profile, std::uint32_t first,
                                    std::uint32_t index) {
        auto const written = writtenPath(profile, index);
        written_.try_emplace(writtenPath(profile, first), first);
        return written_.try_emplace(written, index).first->second;
    }

    // With the number of definitions that each alias had above the line.
    std::string writtenPath(Profile const& profile, std::uint32_t index) {
        auto const& place = device_.mounts[index].place;
        auto const& text = texts_.of(device_.pathOf(place));
        auto const fields = pathFields(logicalLine(text, text.editorLine(place.line)).text);
        auto path = fields ? lowerCaseTokens(fields->path) : std::string();
        auto const line =
            place.include == none ? place.line : device_.includes[place.include].place.line;
        for (auto const& token : tokensIn(path))
            path += fmt::format(",{}", definitionsAbove(profile, token, line));
        return fmt::format("{},{}", path, place.file);
    }

    static std::string lowerCaseTokens(std::string path) {
        std::size_t at = 0;
        for (auto const& token : tokensIn(path)) {
            at = path.find(token, at);
            path.replace(at, token.size(), lowerCase(token));
            at += token.size();
        }
        return path;
    }

    std::ptrdiff_t definitionsAbove(Profile const& profile, std::string const& token,
                                    std::int32_t line) {
        if (definitions_.empty())
            for (auto i = profile.aliases.begin; i < profile.aliases.end; ++i)
                definitions_[lowerCase(device_.aliases[i].name.view())].push_back(
                    device_.aliases[i].place.line);
        auto const& lines = definitions_[token];
        return std::lower_bound(lines.begin(), lines.end(), line) - lines.begin();
    }

    void tellOfInclude(Include const& include, IncludeId first) {
        auto* const finding = findings_.at(include.place, include.profile);
        if (finding == nullptr)
            return;
        finding->subject = {Subject::behindColon, include.pattern};
        finding->message = fmt::format("'{}' takes in files that the profile has included already",
                                       include.pattern);
        if (first != none)
            finding->related.push_back({device_.includes[first].place, "first included here"});
    }

    void tellOfPath(Mount const& first, Mount const& again) {
        auto* const finding = findings_.at(again.place, again.profile);
        if (finding == nullptr)
            return;
        finding->subject = {0, ""};
        finding->message =
            fmt::format("path '{}' is mounted twice, with {} and with {}: it is one mount with {}",
                        again.path, flagsText(first), flagsText(again), flagsOfBoth(first, again));
        finding->related.push_back({first.place, "first mounted here"});
    }

    static std::string flagsOfBoth(Mount const& first, Mount const& again) {
        auto both = first;
        both.flags = KeldaUtil::safelyMergeFlags(first.flags, again.flags);
        return flagsText(both);
    }

    Device const& device_;
    FirstMounts firstMounts_;
    FindingList findings_;
    SourceTexts texts_;
    // Of one profile: the first mount of each path as written, and the lines that define an alias.
    std::unordered_map<std::string, std::uint32_t> written_;
    std::unordered_map<std::string, std::vector<std::int32_t>> definitions_;
};

} // namespace

std::vector<Finding> pathsMountedTwice(Device const& device) {
    return TwiceMounted(device).find();
}

} // namespace KeldaDatabase
