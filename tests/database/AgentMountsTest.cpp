// What each agent mounts: as its own parser says, with the lines that it comes from.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <map>
#include <optional>

#include <KeldaUtil/MountFlags.h>

#include "database/DatabaseMountFileInfo.h"
#include "database/paths/AgentMounts.h"
#include "support/CleanEnvironment.h"
#include "support/Device.h"

namespace {

using KeldaDatabase::AgentMounts;
using KeldaDatabase::DatabaseMountFileInfo;
using testing::ElementsAre;

std::string flagText(Fen::MountTable::Flags flags) {
    return std::string(KeldaUtil::mountTableFlagsToString(flags).view());
}

// "sys/clock Sys::Clock rw: FanTray:4, DefaultMountGroup:2" for each path of an agent, by path.
std::vector<std::string> textsOf(KeldaDatabase::Device const& device, std::size_t agent,
                                 AgentMounts::Wanted const& wanted = {}) {
    std::map<std::string, std::string> texts;
    AgentMounts(device, wanted)
        .visit(device.agents[agent], [&](KeldaDatabase::AgentMount const& mount) {
            std::string lines;
            for (auto const line : mount.lines) {
                auto const& place = device.mounts[line].place;
                lines += (lines.empty() ? "" : ", ") + device.files[place.file].name + ":" +
                         std::to_string(place.line);
            }
            auto const path = std::string(mount.path.view());
            EXPECT_TRUE(texts
                            .emplace(path, path + " " + std::string(mount.type.view()) + " " +
                                               flagText(mount.flags) + ": " + lines)
                            .second)
                << path;
        });
    std::vector<std::string> sorted;
    for (auto const& [path, text] : texts)
        sorted.push_back(text);
    return sorted;
}

class Mounts : public testing::Test {
  protected:
    Mounts() { device.preinit("P", "a,A\nb,B\nc/%x,C,createOnMount\n"); }

    std::vector<std::string> of(std::size_t agent, AgentMounts::Wanted const& wanted = {}) {
        if (!parser_)
            parser_.emplace(device.preinitDir(), device.profileDir());
        return textsOf(parser_->device(), agent, wanted);
    }

    support::CleanEnvironment environment;
    support::Device device;

  private:
    std::optional<DatabaseMountFileInfo> parser_;
};

TEST_F(Mounts, ArePutTogetherFromAllFilesOfTheAgent) {
    device.profile("1", "agentName:X\na,A,r\nInclude:shared\n")
        .profile("2", "agentName:X\nb,B,r\na,A,c\n")
        .profile("3", "agentName:Y-%y\na,A,w\nc/%y,C,rw\nInclude:shared\n")
        .profile("shared", "b,B,i\n")
        .profile("DefaultMountGroup", "a,A,w\n");
    EXPECT_THAT(of(0),
                ElementsAre("a A rwc: 1:2, 2:3, DefaultMountGroup:1", "b B ri: shared:1, 2:2"));
    EXPECT_THAT(of(1),
                ElementsAre("a A w: 3:2, DefaultMountGroup:1", "b B i: shared:1", "c/* C rw: 3:3"));
}

TEST_F(Mounts, AreThoseOfWantedPathsOnly) {
    device.profile("1", "agentName:X\na,A,r\nb,B,r\na,A,w\n");
    auto const isA = [](Rook::String const& path) { return path == "a"; };
    EXPECT_THAT(of(0, isA), ElementsAre("a A rw: 1:2, 1:4"));
    EXPECT_THAT(of(0, [](Rook::String const&) { return false; }), ElementsAre());
}

TEST_F(Mounts, LeaveOutWhatWasRefused) {
    device.profile("1", "agentName:X\na,A,rd\na,A,w\nnowhere,A,r\nb,B,?\n");
    EXPECT_THAT(of(0), ElementsAre("a A w: 1:3"));
}

TEST_F(Mounts, LeaveOutLinesThatGiveThePathAnotherType) {
    device.preinit("P", "c/%x,C,createOnMount\nd/%x,D,createOnMount\n")
        .profile("1", "agentName:X\nCondition:x\nalias:%s=a\nc/%s,C,r\nc/a,Other,w\nc/%s,C,i\n");
    EXPECT_THAT(of(0), ElementsAre("c/a C ri: 1:4, 1:6"));
}

TEST(MountsThatReadOrWrite, HoldTheFlag) {
    auto const flags = [](char const* text) { return KeldaUtil::parseMountTableFlags(text); };
    EXPECT_TRUE(KeldaDatabase::reads(flags("ri")));
    EXPECT_FALSE(KeldaDatabase::reads(flags("wy")));
    EXPECT_TRUE(KeldaDatabase::writes(flags("rw")));
    EXPECT_FALSE(KeldaDatabase::writes(flags("ry")));
    EXPECT_FALSE(KeldaDatabase::writes(flags("w?")));
}

// Random lines of a passive agent, in profiles, included files and the default group.
struct RandomDevice : support::Device {
    RandomDevice() {
        preinit("P", "a,A\na/b,B\nc,C\nd/%x,D,createOnMount\n");
        profile("1", "agentName:X\n" + lines() + "Include:inc*\n" + lines());
        profile("2", "agentName:X\nMountGroup:g\n" + lines() + "Include:included1\n");
        profile("3", "agentName:Y-%y\n" + lines());
        profile("included1", lines());
        profile("included2", lines());
        profile("DefaultMountGroup", lines());
    }

    static std::string lines() {
        std::string text;
        for (auto count = *rc::gen::inRange(0, 4); count > 0; --count)
            text += *rc::gen::element<std::string>("a", "a/b", "c/", "d/%agentString") + ",T," +
                    *rc::gen::element<std::string>("", "r", "w", "rw", "i", "cd", "D", "S") + "\n";
        return text;
    }
};

RC_GTEST_PROP(RandomMounts, AreThoseOfTheAgentsOwnParser, ()) {
    support::CleanEnvironment const environment;
    RandomDevice const random;
    DatabaseMountFileInfo parser(random.preinitDir(), random.profileDir());
    auto const own = random.agent("X", "*"); // %agentString stands for "*"
    own->doInit();
    std::map<std::string, std::string> expected;
    for (auto const& [path, args] : own->pathMountArgsMap())
        expected.emplace(path.view(), std::string(args.type.view()) + " " + flagText(args.flags));
    std::map<std::string, std::string> actual;
    AgentMounts(parser.device())
        .visit(parser.device().agents.at(0), [&](KeldaDatabase::AgentMount const& mount) {
            actual.emplace(mount.path.view(),
                           std::string(mount.type.view()) + " " + flagText(mount.flags));
        });
    RC_ASSERT(actual == expected);
}

} // namespace
