#include "DeviceStory.h"

#include <algorithm>
#include <memory>
#include <tuple>

#include <KeldaBase/LoadObserver.h>
#include <KeldaBase/MountFileInfo.h>

#include "MountCollector.h"

namespace KeldaDatabase {
namespace {

constexpr std::string_view rootFlagsKeyword = "rootFlags:";

// Records the mounts of one agent after another by the library's own rules.
class Replay : public Kelda::MountFileInfo, private Kelda::LoadObserver {
  public:
    Replay(Device const& device, AskedPath const& asked, DeviceLines& lines)
        : MountFileInfo(false, "/nonexistent", "/nonexistent", ""), device_(device), lines_(lines),
          asked_(asked), collector_(asked) {
        loadObserverIs(this);
    }

    // Only what the library asks for; nothing is read here.
    void doInit() override { isInitialized_ = true; }
    Rook::String evaluateAliasValue(Rook::String const& token) override { return token; }

    // The root flags that an agent's profiles give it.
    Rook::String rootFlagsOf(Agent const& agent, bool isActive) {
        clearProfileData();
        allProfilesLoaded_ = true;
        bool isComplete = false;
        for (auto const id : agent.profiles) {
            auto const& profile = device_.profiles[id];
            if (profile.isDefaultGroup() && !std::exchange(isComplete, true))
                rootFlags_ = addDefaultRootFlags(rootFlags_);
            for (auto i = profile.keywords.begin; i < profile.keywords.end; ++i)
                if (device_.keywords[i].keyword == rootFlagsKeyword)
                    handleRootFlags(device_.keywords[i].line);
        }
        if (!isComplete)
            rootFlags_ = addDefaultRootFlags(rootFlags_);
        activeMountSeen_ = isActive;
        maybeAddPassiveRootFlag();
        return rootFlags_;
    }

    std::vector<StoryMount> mountsOf(std::vector<std::size_t> const& mounts,
                                     Rook::String const& rootFlags, bool isAbove) {
        clearProfileData();
        rootFlags_ = rootFlags;
        activeMountSeen_ = isAbove;
        allProfilesLoaded_ = true;
        for (auto const mount : mounts)
            handle(mount);
        if (isAbove)
            inheritParentFlags();
        return collector_.take(pathMountArgsMap_, rootFlags_);
    }

  private:
    void handleRootFlags(std::string const& text) {
        Kelda::LineBuffer line{};
        std::string_view(text).substr(0, line.size() - 1).copy(line.data(), line.size() - 1);
        handleRootFlagsLine(line);
    }

    void handle(std::size_t index) {
        auto const& mount = device_.mounts[index];
        if (asked_.matches(mount.path.view()))
            collector_.lineIsNext(lines_.of(index));
        currentFiles_.push_back({device_.files[mount.place.file].name, mount.place.line});
        recordMountArgsInternal(mount.path, {mount.type, mount.flags}, true);
        currentFiles_.clear();
        collector_.takeRefusedLine();
    }

    void recordChanged(Rook::String const& path, Kelda::MountArgs const* before,
                       Kelda::MountArgs const& after, Kelda::Places places) override {
        collector_.changed(path, before, after, !places.empty());
    }
    void flagsInherited(Rook::String const& path, Rook::String const& parent,
                        Fen::MountTable::Flags before, Fen::MountTable::Flags after) override {
        collector_.inherited(path, parent, before, after);
    }

    Device const& device_;
    DeviceLines& lines_;
    AskedPath const& asked_;
    MountCollector collector_;
};

// What a profile has to do with the path.
struct Part {
    std::vector<std::size_t> mounts;  // those of the path
    std::vector<std::size_t> related; // those that share a directory with it
    bool hasBelow = false;            // mounts something below the path
    bool isActive = false;
};

Part partOf(Device const& device, Profile const& profile, AskedPath const& asked) {
    Part part;
    for (auto i = profile.mounts.begin; i < profile.mounts.end; ++i) {
        auto const& mount = device.mounts[i];
        if (!isMounted(mount) || !asked.sharesFirstName(mount.path.view()))
            continue;
        part.related.push_back(i);
        if (asked.matches(mount.path.view()))
            part.mounts.push_back(i);
        else
            part.hasBelow = part.hasBelow || !asked.ancestorIn(mount.path.view()).empty();
    }
    for (auto i = profile.keywords.begin; i < profile.keywords.end; ++i)
        part.isActive = part.isActive || device.keywords[i].keyword == "activeMount";
    return part;
}

class Agents {
  public:
    Agents(Device const& device, AskedPath const& asked, DeviceLines& lines)
        : replay_(std::make_unique<Replay>(device, asked, lines)) {
        for (auto const& profile : device.profiles)
            parts_.push_back(partOf(device, profile, asked));
    }

    void add(Agent const& agent) {
        auto const any = [&](auto const& member) {
            return std::ranges::any_of(agent.profiles,
                                       [&](ProfileId id) { return member(parts_[id]); });
        };
        bool const isActive = any([](Part const& part) { return part.isActive; });
        bool const isAbove = isActive && any([](Part const& part) { return part.hasBelow; });
        if (!isAbove && !any([](Part const& part) { return !part.mounts.empty(); }))
            return;
        std::vector<ProfileId> profiles;
        for (auto const id : agent.profiles)
            if (!(isAbove ? parts_[id].related : parts_[id].mounts).empty())
                profiles.push_back(id);
        auto const rootFlags = isAbove ? replay_->rootFlagsOf(agent, isActive) : Rook::String();
        auto const [known, added] =
            known_.try_emplace({profiles, rootFlags, isActive, isAbove}, told_.size());
        if (added)
            told_.push_back(
                {{}, isActive, replay_->mountsOf(mountsOf(profiles, isAbove), rootFlags, isAbove)});
        told_[known->second].names.push_back(nameOf(agent));
    }

    std::vector<StoryAgent> take() {
        std::erase_if(told_, [](StoryAgent const& agent) { return agent.mounts.empty(); });
        return std::move(told_);
    }

  private:
    using Key = std::tuple<std::vector<ProfileId>, Rook::String, bool, bool>;

    std::vector<std::size_t> mountsOf(std::vector<ProfileId> const& profiles, bool isAbove) const {
        std::vector<std::size_t> mounts;
        for (auto const id : profiles) {
            auto const& more = isAbove ? parts_[id].related : parts_[id].mounts;
            mounts.insert(mounts.end(), more.begin(), more.end());
        }
        return mounts;
    }

    std::unique_ptr<Replay> replay_;
    std::vector<Part> parts_; // by profile
    std::map<Key, std::size_t> known_;
    std::vector<StoryAgent> told_;
};

} // namespace

std::string nameOf(Agent const& agent) {
    return std::string((agent.isActiveVariant ? agent.agentString : agent.name).view());
}

std::vector<StoryAgent> agentsThatMount(Device const& device, AskedPath const& asked,
                                        DeviceLines& lines) {
    Agents agents(device, asked, lines);
    for (auto const& agent : device.agents)
        agents.add(agent);
    return agents.take();
}

} // namespace KeldaDatabase
