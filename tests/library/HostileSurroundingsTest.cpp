// What surrounds the files: entries of a directory that are no files, variables full of garbage,
// agent strings that nobody meant.
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <functional>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/Answers.h"
#include "support/CleanEnvironment.h"
#include "support/Device.h"
#include "support/Thrown.h"
#include "support/TraceRecorder.h"

namespace {

using support::EnvironmentVariable;
using support::nothingThrown;
using support::thrownText;

class HostileSurroundings : public testing::Test {
  protected:
    HostileSurroundings() {
        device.preinit("Base", "a/b,T\n");
        device.profile("Fan", "agentName: Fan\na/b,T,r\n");
    }

    std::string loadFault(std::string const& agent = "Fan") {
        auto const parser = device.agent(agent);
        return thrownText([&] { parser->doInit(); });
    }
    static void makeSocket(std::string const& path) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        ASSERT_LT(path.size(), sizeof(address.sun_path));
        path.copy(address.sun_path, path.size());
        int const descriptor = socket(AF_UNIX, SOCK_STREAM, 0);
        void const* const generic = &address;
        EXPECT_EQ(bind(descriptor, static_cast<sockaddr const*>(generic), sizeof(address)), 0);
        close(descriptor);
    }

    support::CleanEnvironment environment;
    support::Device device;
};

// --- entries of a directory that are no files ---

struct Oddity {
    char const* name;
    std::function<void(std::string const&)> make;
};

std::vector<Oddity> const unreadable{
    {"a pipe", [](auto& path) { ASSERT_EQ(mkfifo(path.c_str(), 0600), 0); }},
    {"an endless device", [](auto& path) { std::filesystem::create_symlink("/dev/zero", path); }},
    {"an empty device", [](auto& path) { std::filesystem::create_symlink("/dev/null", path); }},
    {"a link to nothing", [](auto& path) { std::filesystem::create_symlink("no/such", path); }},
    {"a link to itself", [](auto& path) { std::filesystem::create_symlink(path, path); }},
};

TEST_F(HostileSurroundings, WhatIsNoFileIsReportedWhereverItLies) {
    for (auto const& oddity : unreadable)
        for (auto const& directory : {device.preinitDir(), device.profileDir()}) {
            auto const path = directory + "/Odd";
            oddity.make(path);
            EXPECT_EQ(loadFault(), "Cannot openat file Odd in " + directory) << oddity.name;
            std::filesystem::remove(path);
        }
    EXPECT_EQ(loadFault(), nothingThrown);
}

TEST_F(HostileSurroundings, ASocketIsReportedAsWell) {
    makeSocket(device.profileDir() + "/Odd");
    EXPECT_EQ(loadFault(), "Cannot openat file Odd in " + device.profileDir());
}

TEST_F(HostileSurroundings, WhatIsNoFileIsReportedInTheExtraPreinitList) {
    for (auto const& oddity : unreadable) {
        auto const path = device.directory().string() + "/odd";
        EnvironmentVariable const list("KELDA_EXTRA_PREINIT_PATH", path.c_str());
        oddity.make(path);
        EXPECT_EQ(loadFault(), "Unable to fopen preinit profile: " + path) << oddity.name;
        std::filesystem::remove(path);
    }
}

TEST_F(HostileSurroundings, WhatIsNoFileIsReportedWhenItIsIncluded) {
    ASSERT_EQ(mkfifo((device.profileDir() + "/~pipe").c_str(), 0600), 0);
    std::filesystem::rename(device.profileDir() + "/~pipe", device.profileDir() + "/Zpipe");
    device.profile("Fan", "agentName: Fan\nInclude: Zpipe\n");
    EXPECT_EQ(loadFault(),
              support::faultIn("Fan", 2, "Cannot openat file Zpipe in " + device.profileDir()));
}

TEST_F(HostileSurroundings, AFolderReadsAsAnEmptyFile) {
    for (auto const* const name : {"preinit/Odd", "profiles/Odd", "profiles/DefaultMountGroup"})
        device.directory().makeDirectory(name);
    EXPECT_EQ(loadFault(), nothingThrown);
    device.profile("Fan", "agentName: Fan\nInclude: Odd\na/b,T,r\n");
    EXPECT_EQ(loadFault(), nothingThrown);
}

TEST_F(HostileSurroundings, FilesMayHaveAnyName) {
    for (std::string const name :
         {"%s%n", "{}", "a b", "\xff\xfe", "[x]", "*", "-", "a\\b", "n\nl"}) {
        device.profile(name, "agentName: Odd\nfoo\n");
        EXPECT_EQ(loadFault("Odd"), support::faultIn(name, 2, "syntax error: 'foo'")) << name;
        std::filesystem::remove(device.profileDir() + "/" + name);
    }
}

TEST_F(HostileSurroundings, ADirectoryMayHaveAnyName) {
    support::TemporaryDirectory root;
    for (std::string const name : {"[ab]*?", "{}%s%n", "a b", "\\", "~"}) {
        root.write(name + "/preinit/Base", "a/b,T\n");
        root.write(name + "/profiles/Fan", "agentName: Fan\na/b,T,r\n");
        Kelda::AgentMountFileInfo parser(false, (root / name / "preinit").string(),
                                         (root / name / "profiles").string(), true, "D");
        parser.addAgent("Fan", "");
        EXPECT_TRUE(parser.infoExists("a/b")) << name;
    }
}

TEST_F(HostileSurroundings, IncludesOfEverythingComeToAnEnd) {
    device.profile("Fan", "agentName: Fan\nInclude: *\nInclude: Fan\na/b,T,r\n");
    EXPECT_EQ(loadFault(), support::faultIn("Fan", 1,
                                            "Syntax error in included file: 'agentName:Fan'. One "
                                            "may only specify mount paths or the activeMount "
                                            "keyword in an included file. For more information "
                                            "see REF482"));
    support::LenientAgent parser(device.preinitDir(), device.profileDir());
    parser.addAgent("Fan", "");
    EXPECT_TRUE(parser.infoExists("a/b"));
}

TEST_F(HostileSurroundings, IncludePatternsThatMatchSlowlyComeToAnEnd) {
    device.profile(std::string(250, 'a'), "a/b,T,r\n");
    std::string pattern;
    for (int i = 0; i < 100; ++i)
        pattern += "a*";
    device.profile("Fan", "agentName: Fan\nInclude: " + pattern + "b\nInclude:" + pattern + "\n");
    EXPECT_EQ(loadFault(), nothingThrown);
}

TEST_F(HostileSurroundings, AnIncludeDoesNotLeaveItsDirectory) {
    device.profile("Fan", "agentName: Fan\nInclude: ../preinit/Base\n");
    EXPECT_THAT(loadFault(), testing::StartsWith(support::faultIn("Fan", 2, "Cannot ")));
}

// --- variables ---

TEST_F(HostileSurroundings, AnExtraPreinitListOfGarbageIsReported) {
    auto const endless = std::string(100000, 'x');
    struct Row {
        std::string list;
        std::string reported;
    };
    for (auto const& row :
         {Row{":", ""}, Row{"::", ""}, Row{"no/such", "no/such"}, Row{"no/such///", "no/such"},
          Row{"%s%n{}", "%s%n{}"}, Row{"\xff\xfe", "\xff\xfe"}, Row{endless, endless},
          Row{device.preinitDir() + ":no/such:", "no/such"}}) {
        EnvironmentVariable const list("KELDA_EXTRA_PREINIT_PATH", row.list.c_str());
        EXPECT_EQ(loadFault(), "Unable to fopen preinit profile: " + row.reported);
    }
}

TEST_F(HostileSurroundings, AnExtraPreinitFileMayEndInSlashes) {
    auto const file = device.directory().write("Extra", "x/y,T\n");
    EnvironmentVariable const list("KELDA_EXTRA_PREINIT_PATH", (file + "//").c_str());
    EXPECT_EQ(device.agent("Fan")->getType("x/y"), "T");
}

TEST_F(HostileSurroundings, AnExtraProfileDirectoryOfGarbageIsReported) {
    auto const endless = std::string(100000, 'x');
    for (std::string const& value : {std::string("no/such"), std::string(":"), std::string("%s{}"),
                                     std::string("\xff"), endless}) {
        EnvironmentVariable const path("KELDA_EXTRA_PROFILE_PATH", value.c_str());
        EXPECT_EQ(loadFault(), "Cannot open directory " + value);
    }
}

TEST_F(HostileSurroundings, AnEmptyExtraProfileDirectoryIsNone) {
    EnvironmentVariable const path("KELDA_EXTRA_PROFILE_PATH", "");
    EXPECT_EQ(loadFault(), nothingThrown);
}

TEST_F(HostileSurroundings, ThePackageIsTextLikeAnyOther) {
    EnvironmentVariable const package("Q9PKG", "%s%n{}");
    auto const parser = device.agent("Fan");
    auto const text = thrownText([&] { parser->getType("no/such"); });
    EXPECT_THAT(text, testing::HasSubstr("currently set to '%s%n{}'."));
    EXPECT_THAT(text, testing::HasSubstr("you are assuming %s%n{} has a package dependency"));
}

TEST_F(HostileSurroundings, SwitchesCountWhateverTheirValue) {
    for (auto const* const value : {"", "0", "no", "\xff"}) {
        EnvironmentVariable const noDefault("MFI_NO_DEFAULT_PREINIT", value);
        EnvironmentVariable const chroot("Q9_CHROOT", value);
        auto const parser = device.agent("Fan");
        EXPECT_EQ(parser->mountInfo("a/b").type, "T");
        EXPECT_FALSE(parser->defaultPreinitsLoaded());
        EXPECT_TRUE(parser->chroot());
    }
}

// --- agent strings ---

TEST_F(HostileSurroundings, AnyAgentStringIsServed) {
    using namespace std::string_literals;
    device.profile("Each", "agentName: Each-%x\n");
    support::TraceRecorder const trace; // all levels on: every text is formatted
    for (std::string const& agent :
         {""s, "-"s, "---"s, "-Active-"s, "A-Active-"s, "-Active-A"s, "-Active--Active-"s, "%"s,
          "%agentString"s, "%s%n{}"s, "*"s, "Each-"s, "Each--"s, "Each-%x"s, "Each-\n"s,
          "Each-\xff"s, "Each-a\0b"s, "Each-" + std::string(100000, '-'),
          "Each-" + std::string(100000, 'x')}) {
        EXPECT_EQ(loadFault(agent), nothingThrown) << agent.substr(0, 100);
        auto const parser = device.agent(agent, agent);
        EXPECT_EQ(parser->foundMountProfile(agent), agent.starts_with("Each-"))
            << agent.substr(0, 100);
    }
}

TEST_F(HostileSurroundings, AnOverlongTokenValueIsReportedWhereItIsUsed) {
    device.preinit("More", "each/%x,T,createOnMount\n");
    device.profile("Each", "agentName: Each-%x\neach/%x,T,r\n");
    EXPECT_THAT(loadFault("Each-" + std::string(5000, 'x')),
                testing::StartsWith(support::faultIn(
                    "Each", 2, "Path buffer too small to expand alias from '%x'to 'xxx")));
}

TEST_F(HostileSurroundings, AnOverlongOverrideIsReportedWhereItIsUsed) {
    device.preinit("More", "each/%agentString,T,createOnMount\n");
    device.profile("DefaultMountGroupPerAgent", "each/%agentString,T,r\n");
    for (std::size_t const length : {1023U, 1024U, 1025U, 100000U}) {
        auto const parser = device.agent("Fan", std::string(length, 'x'));
        EXPECT_THAT(thrownText([&] { parser->doInit(); }),
                    testing::StartsWith(support::faultIn(
                        "DefaultMountGroupPerAgent", 1,
                        "Path buffer too small to expand alias from '%agentString'to 'xxx")))
            << length;
    }
}

} // namespace
