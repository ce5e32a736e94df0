// The profile that no file holds: it mounts every path that a preinit file declares with CONFIG:.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include <KeldaUtil/MountFlags.h>

#include "support/CleanEnvironment.h"
#include "support/Device.h"
#include "support/FaultLists.h"
#include "support/Scanner.h"
#include "support/TraceRecorder.h"

namespace {

using support::Strings;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

constexpr auto name = "ConfigMountProfile";

class ConfigMountProfile : public testing::Test {
  protected:
    ConfigMountProfile() : scanner_(device_.preinitDir(), device_.profileDir()) {
        scanner_.loadPreinit("CONFIG:sys/b,B\nCONFIG:sys/a,A\nplain,P\n");
        scanner_.initializedIs(true);
    }
    int scan() { return scanner_.scan(device_.profileDir(), name); }
    static std::string flagsOf(Kelda::MountArgs const& args) {
        return std::string(KeldaUtil::mountTableFlagsToString(args.flags).view());
    }

    support::CleanEnvironment environment_;
    support::Device device_;
    support::Scanner scanner_;
};

TEST_F(ConfigMountProfile, MountsEveryDeclaredConfigPath) {
    EXPECT_EQ(scan(), 1);
    auto const& mounts = scanner_.pathMountArgsMap();
    ASSERT_EQ(mounts.size(), 2U);
    EXPECT_EQ(mounts.at("sys/a").type, "A");
    EXPECT_EQ(mounts.at("sys/b").type, "B");
    for (auto const& [path, args] : mounts) {
        EXPECT_EQ(flagsOf(args), "wi") << path;
        EXPECT_TRUE(args.isExplicit) << path;
    }
    EXPECT_THAT(scanner_.intermediatePaths(), IsEmpty());
    EXPECT_THAT(support::faultList(scanner_), IsEmpty());
}

TEST_F(ConfigMountProfile, ChildrenAndNonConfigPathsAreNotMounted) {
    scanner_.addConfigChildPath("sys/a/child");
    scanner_.addNonConfigPath("sys/other");
    scan();
    EXPECT_EQ(scanner_.pathMountArgsMap().size(), 2U);
}

TEST_F(ConfigMountProfile, APathWithATokenHasTheTypeOfItsWildcardPath) {
    support::Scanner scanner;
    scanner.loadPreinit("CONFIG:a/%cellId,T\n");
    auto const faultsBefore = scanner.exceptions().size();
    scanner.scan(device_.profileDir(), name);
    ASSERT_TRUE(scanner.pathMountArgsMap().contains("a/%cellId"));
    EXPECT_EQ(scanner.pathMountArgsMap().at("a/%cellId").type, "T");
    EXPECT_EQ(scanner.exceptions().size(), faultsBefore);
}

TEST_F(ConfigMountProfile, ItsPathsAreFiledUnderItsName) {
    scan();
    auto paths = support::strings(scanner_.profileFilePathsMap().at(name));
    EXPECT_THAT(paths, UnorderedElementsAre("sys/a", "sys/b"));
    EXPECT_TRUE(scanner_.fileIsLoaded(name));
}

TEST_F(ConfigMountProfile, ItsPathsBelongToTheCurrentGroupOfTheCurrentAgent) {
    scanner_.agentKeyIs("Fan");
    scanner_.recordMountGroup("fast", 1);
    scan();
    ASSERT_EQ(scanner_.mountGroupPathsMap().size(), 1U);
    EXPECT_THAT(support::strings(scanner_.mountGroupPathsMap().at("Fan::fast")),
                UnorderedElementsAre("sys/a", "sys/b"));
}

TEST_F(ConfigMountProfile, AddsItsFlagsToAPathMountedBefore) {
    scanner_.recordMountArgsInternal("sys/a", {"A", KeldaUtil::parseMountTableFlags("r"), false},
                                     true);
    scan();
    EXPECT_EQ(flagsOf(scanner_.pathMountArgsMap().at("sys/a")), "rwi");
}

TEST_F(ConfigMountProfile, EachPathIsTraced) {
    support::TraceRecorder const trace;
    scan();
    auto texts = trace.at(2);
    ASSERT_EQ(texts.size(), 3U);
    EXPECT_EQ(texts.front(), "Reading virtual ConfigMountProfile file ");
    std::sort(texts.begin() + 1, texts.end());
    EXPECT_EQ(texts[1], "Adding sys/a with flags wi to virtual ConfigMountProfile file");
    EXPECT_EQ(texts[2], "Adding sys/b with flags wi to virtual ConfigMountProfile file");
}

TEST_F(ConfigMountProfile, CountsOneWithoutAnyConfigPath) {
    support::Scanner scanner;
    EXPECT_EQ(scanner.scan(device_.profileDir(), name), 1);
    EXPECT_THAT(scanner.pathMountArgsMap(), IsEmpty());
    EXPECT_THAT(scanner.profileFilePathsMap(), IsEmpty());
    EXPECT_THAT(support::faultList(scanner), IsEmpty());
}

TEST_F(ConfigMountProfile, AFileOfThatNameIsNotRead) {
    device_.profile(name, "");
    EXPECT_EQ(scan(), 1);
    EXPECT_THAT(scanner_.filesRead(), IsEmpty());
    EXPECT_EQ(scanner_.pathMountArgsMap().size(), 2U);
}

TEST_F(ConfigMountProfile, OnlyItsVeryNameStandsForIt) {
    device_.profile(name, "");
    for (char const* const pattern : {"ConfigMountProfile*", "Config*", "[C]onfigMountProfile"}) {
        support::Scanner scanner;
        scanner.addPathConfigInfo("a", true, true);
        EXPECT_EQ(scanner.scan(device_.profileDir(), pattern), 1) << pattern;
        EXPECT_THAT(scanner.filesRead(), ElementsAre(name)) << pattern;
        EXPECT_THAT(scanner.pathMountArgsMap(), IsEmpty()) << pattern;
    }
    EXPECT_EQ(scanner_.scan(device_.profileDir(), "configmountprofile"), 0);
}

TEST_F(ConfigMountProfile, AScanOfTheWholeDirectoryReadsTheFile) {
    device_.profile(name, "");
    EXPECT_EQ(scanner_.scan(device_.profileDir()), 1);
    EXPECT_THAT(scanner_.filesRead(), ElementsAre(name));
    EXPECT_THAT(scanner_.pathMountArgsMap(), IsEmpty());
}

// --- with the check for several writers ---

using ConfigMountProfileOnDisk = ConfigMountProfile;

TEST_F(ConfigMountProfileOnDisk, AFileOfThatNameIsReadInstead) {
    device_.profile(name, "");
    for (char const* const value : {"", "0", "1"}) {
        support::EnvironmentVariable const check("PROFILEMULTIWRITERCHECK", value);
        support::Scanner scanner;
        scanner.addPathConfigInfo("a", true, true);
        scanner.onFile = [](FILE*) { return 5; };
        EXPECT_EQ(scanner.scan(device_.profileDir(), name), 5) << value;
        EXPECT_THAT(scanner.filesRead(), ElementsAre(name)) << value;
        EXPECT_THAT(scanner.pathMountArgsMap(), IsEmpty()) << value;
    }
}

TEST_F(ConfigMountProfileOnDisk, AFileThatGivesNothingLeadsToTheVirtualOne) {
    device_.profile(name, "");
    support::EnvironmentVariable const check("PROFILEMULTIWRITERCHECK", "1");
    scanner_.onFile = [](FILE*) { return 0; };
    EXPECT_EQ(scan(), 1);
    EXPECT_THAT(scanner_.filesRead(), ElementsAre(name));
    EXPECT_EQ(scanner_.pathMountArgsMap().size(), 2U);
}

TEST_F(ConfigMountProfileOnDisk, AMissingFileLeadsToTheVirtualOne) {
    support::EnvironmentVariable const check("PROFILEMULTIWRITERCHECK", "1");
    EXPECT_EQ(scan(), 1);
    EXPECT_EQ(scanner_.pathMountArgsMap().size(), 2U);
    EXPECT_THAT(support::faultList(scanner_), IsEmpty());
}

TEST_F(ConfigMountProfileOnDisk, AnExcludedFileLeadsToTheVirtualOne) {
    device_.profile(name, "");
    support::EnvironmentVariable const check("PROFILEMULTIWRITERCHECK", "1");
    scanner_.exclusionRegexIs("^Config");
    EXPECT_EQ(scan(), 1);
    EXPECT_THAT(scanner_.filesRead(), IsEmpty());
    EXPECT_EQ(scanner_.pathMountArgsMap().size(), 2U);
}

TEST_F(ConfigMountProfileOnDisk, AnyOtherPatternHasNoVirtualProfile) {
    support::EnvironmentVariable const check("PROFILEMULTIWRITERCHECK", "1");
    EXPECT_EQ(scanner_.scan(device_.profileDir(), "Config*"), 0);
    EXPECT_THAT(scanner_.pathMountArgsMap(), IsEmpty());
}

// --- included by a profile ---

TEST_F(ConfigMountProfile, AnIncludeOfItCountsOneProfile) {
    device_.profile(name, "not read\n");
    EXPECT_EQ(scanner_.loadProfile("Include:ConfigMountProfile\n", "Fan"), 2);
    EXPECT_EQ(scanner_.pathMountArgsMap().size(), 2U);
    EXPECT_THAT(support::faultList(scanner_), IsEmpty());
}

TEST_F(ConfigMountProfile, AnIncludeOfItIncludesNoFile) {
    scanner_.loadProfile("Include:ConfigMountProfile\n", "Fan");
    EXPECT_THAT(scanner_.profileFileIncludesMap(), IsEmpty());
}

TEST_F(ConfigMountProfileOnDisk, AnIncludeOfItReadsTheFile) {
    device_.profile(name, "plain,P,r\n");
    support::EnvironmentVariable const check("PROFILEMULTIWRITERCHECK", "1");
    EXPECT_EQ(scanner_.loadProfile("Include:ConfigMountProfile\n", "Fan"), 2);
    ASSERT_EQ(scanner_.pathMountArgsMap().size(), 1U);
    EXPECT_EQ(flagsOf(scanner_.pathMountArgsMap().at("plain")), "r");
    EXPECT_THAT(support::strings(scanner_.profileFileIncludesMap().at("Fan")), ElementsAre(name));
}

TEST_F(ConfigMountProfile, AnAgentThatIncludesItMountsTheConfigPaths) {
    device_.preinit("Base", "CONFIG:sys/a,A\n")
        .profile("Fan", "agentName:Fan\nMountGroup:config\nInclude:ConfigMountProfile\n");
    auto const parser = device_.agent("Fan");
    EXPECT_EQ(parser->mountInfo("sys/a"),
              (Kelda::MountArgs{"A", KeldaUtil::parseMountTableFlags("wi"), true}));
    EXPECT_THAT(support::strings(parser->mountGroupPaths("Fan::config")), ElementsAre("sys/a"));
}

} // namespace
