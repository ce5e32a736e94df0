// Construction, the init and un-init cycle, and what each of the resets forgets.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <Fen/SystemName.h>
#include <KeldaBase/DynCell.h>
#include <MemSlab/Slab.h>

#include "support/CleanEnvironment.h"
#include "support/Device.h"
#include "support/EnvironmentVariable.h"
#include "support/FaultLists.h"
#include "support/ParserDump.h"
#include "support/TraceRecorder.h"

namespace {

using support::Dump;
using support::DumpableParser;
using support::EnvironmentVariable;
using support::TraceRecorder;
using testing::ElementsAre;
using testing::IsEmpty;

// Fills every member, as a load would that is still in the middle of the profile "Open".
void fillEverything(DumpableParser& parser) {
    parser.loadPreinit("CONFIG:sys/clock,Clock\nagent/%cellId/status,Status,createOnMount\n");
    parser.loadProfile("rootFlags:w\nconnectionFlags:SN\nsubAgent:Helper\nnoDefaultMountGroup\n"
                       "matchActiveName\nactiveMount\nsys/clock,Clock,r\nno such keyword\n");
    parser.recordMountArgsInternal("sys", {"Fen::Dir", Fen::MountTable::Flags(), false}, false);
    parser.profileFileIncludesMapIs("Profile", "Common");
    parser.agentStringProfileFileMapIs("Fan", "Profile");
    parser.openFile("Open", 4);
    parser.agentKeyIs("Fan");
    parser.recordMountGroup("group", 5);
    parser.recordCondition(support::lineOf("Condition:on"), false);
    parser.perFileAliasesPushBack("%slot", "3");
    parser.titleTemplatesPushBack("%slot");
}

// `base` with the named sections as in `other`.
Dump with(Dump base, Dump const& other, std::vector<std::string> const& sections) {
    for (auto const& section : sections)
        base.at(section) = other.at(section);
    return base;
}

struct MapFigures {
    char const* name;
    std::size_t size;
    std::size_t buckets;
    float loadFactor;
};

// The hash maps that both loading and un-initialising are about.
std::vector<MapFigures> hashMaps(DumpableParser const& parser) {
    std::vector<MapFigures> figures;
    auto const add = [&figures](char const* name, auto const& map) {
        figures.push_back({name, map.size(), map.bucket_count(), map.max_load_factor()});
    };
    add("mountGroupPathsMap", parser.mountGroupPathsMap());
    add("profileFilePathsMap", parser.profileFilePathsMap());
    add("profileFileIncludesMap", parser.profileFileIncludesMap());
    add("agentStringProfileFileMap", parser.agentStringProfileFileMap());
    add("perFileAliases", parser.perFileAliases());
    add("pathTypeMap", parser.pathTypeMap());
    add("pathAttrMap", parser.pathAttrMap());
    add("pathConfigInfoMap", parser.configInfos());
    return figures;
}

void expectFresh(MapFigures const& map) {
    EXPECT_EQ(map.size, 0U) << map.name;
    EXPECT_EQ(map.buckets, 1U) << map.name;
}

class LifeCycle : public testing::Test {
  protected:
    DumpableParser parser;
};

// --- construction ---

TEST_F(LifeCycle, TheConstructorKeepsItsArguments) {
    support::LenientParser const kept("/preinits", "/profiles", true);
    EXPECT_EQ(kept.preinitDir(), "/preinits");
    EXPECT_EQ(kept.keldaMountProfileDir(), "/profiles");
    EXPECT_EQ(kept.defaultGroupName(), "DefaultMountGroup");
    EXPECT_TRUE(kept.dontMergeFlags());
    EXPECT_FALSE(parser.dontMergeFlags());
}

TEST_F(LifeCycle, AFreshParserKnowsNothing) {
    EXPECT_FALSE(parser.isInitialized());
    EXPECT_EQ(parser.doInitCount(), 0);
    auto dump = parser.dump();
    dump.erase("predefined");
    for (auto const& [section, text] : dump)
        EXPECT_TRUE(text.empty() || text == "false") << section << " is " << text;
}

TEST_F(LifeCycle, AFreshHashMapHasOneBucketAndLoadFactorOne) {
    for (auto const& map : hashMaps(parser)) {
        expectFresh(map);
        EXPECT_EQ(map.loadFactor, 1.0F) << map.name;
    }
}

TEST_F(LifeCycle, FourAliasesAreDefinedFromTheStart) {
    auto const valueOf = [this](char const* alias) {
        return std::string(parser.lookupAlias(alias).value_or("(none)").view());
    };
    EXPECT_EQ(valueOf("%cellId"), std::to_string(DynCell::cellId()));
    EXPECT_EQ(valueOf("%peerCellId"), std::to_string(DynCell::peerCellId(0)));
    EXPECT_EQ(valueOf("%sysname"), std::string(Fen::systemName().view()));
    EXPECT_EQ(valueOf("%sliceId"), "FixedSystem");
    EXPECT_EQ(parser.predefinedAliases().size(), 4U);
}

TEST_F(LifeCycle, ConstructionTracesItsArguments) {
    TraceRecorder const trace;
    support::LenientParser const made("/preinits", "/profiles", true);
    EXPECT_THAT(trace.at(7),
                ElementsAre("( dontMergeFlags : true, preinitDir : /preinits, keldaMountProfileDir "
                            ": /profiles, defaultGroupName : DefaultMountGroup )"));
}

TEST_F(LifeCycle, AFileLoadCheckThatCannotParseIsOnlyTraced) {
    ASSERT_FALSE(parser.profileFileCheck().parsed());
    TraceRecorder const trace;
    support::LenientParser const made;
    EXPECT_THAT(trace.at(1), ElementsAre("Failed to parse KeldaMountProfiles json files ",
                                         "Failed to parse preinit json files "));
    EXPECT_THAT(support::messages(made), IsEmpty());
}

TEST_F(LifeCycle, TheTwoFileLoadChecksAreMadeForTheTwoFileFamilies) {
    EXPECT_EQ(parser.profileFileCheck().fileType(), "KeldaMountProfiles");
    EXPECT_EQ(parser.preinitFileCheck().fileType(), "preinit");
}

TEST_F(LifeCycle, ChrootIsWhetherTheVariableIsSetAtAll) {
    struct {
        char const* value;
        bool chroot;
    } const rows[] = {{nullptr, false}, {"", true}, {"1", true}, {"0", true}};
    for (auto const& row : rows) {
        EnvironmentVariable const variable("Q9_CHROOT", row.value);
        EXPECT_EQ(support::LenientParser().chroot(), row.chroot)
            << (row.value == nullptr ? "unset" : row.value);
    }
}

TEST_F(LifeCycle, ChrootIsDecidedAtConstruction) {
    std::optional<EnvironmentVariable> variable(std::in_place, "Q9_CHROOT", "");
    support::LenientParser const made;
    variable.emplace("Q9_CHROOT", nullptr);
    EXPECT_TRUE(made.chroot());
}

// --- handleDoInit ---

TEST_F(LifeCycle, TheFirstInitialisationIsCountedInSilence) {
    TraceRecorder const trace;
    parser.handleDoInit();
    EXPECT_TRUE(parser.isInitialized());
    EXPECT_EQ(parser.doInitCount(), 1);
    EXPECT_EQ(trace.at(8).size(), 1U);
    EXPECT_THAT(trace.at(2), IsEmpty());
}

TEST_F(LifeCycle, EveryFurtherInitialisationIsTracedWithItsNumber) {
    parser.handleDoInit();
    TraceRecorder const trace;
    parser.handleDoInit();
    EXPECT_THAT(trace.at(2), ElementsAre("doInit called 2 times"));
    parser.handleDoInit();
    EXPECT_THAT(trace.at(2), ElementsAre("doInit called 2 times", "doInit called 3 times"));
    EXPECT_TRUE(parser.isInitialized());
    EXPECT_EQ(parser.doInitCount(), 3);
}

// --- unDoInit ---

TEST_F(LifeCycle, UnDoInitOfAParserThatWasNeverInitialisedChangesNothing) {
    fillEverything(parser);
    auto const before = parser.dump();
    TraceRecorder const trace;
    parser.unDoInit();
    EXPECT_EQ(parser.dump(), before);
    EXPECT_EQ(trace.lines().size(), 1U);
    EXPECT_EQ(trace.at(7).size(), 1U);
}

TEST_F(LifeCycle, UnDoInitReturnsTheParserToWhatItsConstructorMade) {
    auto const fresh = parser.dump();
    fillEverything(parser);
    parser.handleDoInit();
    auto const filled = parser.dump();
    parser.unDoInit();
    EXPECT_EQ(parser.dump(), with(fresh, filled, {"aliases", "titles", "faults"}));
    EXPECT_FALSE(parser.isInitialized());
}

TEST_F(LifeCycle, UnDoInitKeepsTheNumberOfInitialisations) {
    parser.handleDoInit();
    parser.unDoInit();
    EXPECT_EQ(parser.doInitCount(), 1);
    TraceRecorder const trace;
    parser.handleDoInit();
    EXPECT_TRUE(trace.has(2, "doInit called 2 times"));
}

TEST_F(LifeCycle, UnDoInitTracesThatItCleansUp) {
    parser.handleDoInit();
    TraceRecorder const trace;
    parser.unDoInit();
    EXPECT_EQ(trace.at(7).size(), 1U);
    EXPECT_THAT(trace.at(2), ElementsAre("Cleaning up memory and setting isInitialized_ to false"));
}

TEST_F(LifeCycle, UnDoInitTwiceIsUnDoInitOnce) {
    fillEverything(parser);
    parser.handleDoInit();
    parser.unDoInit();
    auto const once = parser.dump();
    parser.unDoInit();
    EXPECT_EQ(parser.dump(), once);
}

TEST_F(LifeCycle, UnDoInitReleasesTheMemoryOfTheMaps) {
    fillEverything(parser);
    parser.handleDoInit();
    parser.unDoInit();
    for (auto const& map : hashMaps(parser))
        if (map.name != std::string("perFileAliases"))
            expectFresh(map);
    EXPECT_EQ(parser.currentFiles().capacity(), 0U);
}

TEST_F(LifeCycle, UnDoInitGivesAllOfItsMemoryBackToTheSlab) {
    auto const before = Kelda::mountFileInfoSlab().bytesInUse();
    for (int i = 0; i < 1000; ++i)
        parser.pathTypeMapIs("released/" + std::to_string(i), "T");
    parser.handleDoInit();
    ASSERT_GT(Kelda::mountFileInfoSlab().bytesInUse(), before);
    parser.unDoInit();
    EXPECT_EQ(Kelda::mountFileInfoSlab().bytesInUse(), before);
}

// --- clearProfileData and resetFileContext ---

TEST_F(LifeCycle, ClearProfileDataForgetsWhatProfilesBrought) {
    auto const fresh = parser.dump();
    fillEverything(parser);
    parser.handleDoInit();
    TraceRecorder const trace;
    parser.clearProfileData();
    EXPECT_EQ(trace.at(7).size(), 1U);
    auto const cleared = parser.dump();
    for (auto const* section :
         {"groups", "files", "includes", "agents", "mounts", "open files", "aliases", "titles",
          "faults", "active", "match active name", "no default group", "found profile",
          "root flags", "connection flags", "agent key", "group"})
        EXPECT_EQ(cleared.at(section), fresh.at(section)) << section;
}

TEST_F(LifeCycle, ClearProfileDataLeavesNoIntermediatePathWithoutItsRecord) {
    fillEverything(parser);
    ASSERT_EQ(parser.intermediatePaths().count("sys"), 1U);
    parser.clearProfileData();
    EXPECT_THAT(parser.intermediatePaths(), IsEmpty());
}

TEST_F(LifeCycle, ClearProfileDataKeepsWhatPreinitFilesBrought) {
    fillEverything(parser);
    parser.handleDoInit();
    auto const filled = parser.dump();
    parser.clearProfileData();
    auto const cleared = parser.dump();
    for (auto const* section : {"types", "attributes", "config", "predefined", "initialized"})
        EXPECT_EQ(cleared.at(section), filled.at(section)) << section;
    EXPECT_EQ(parser.doInitCount(), 1);
}

TEST_F(LifeCycle, ClearProfileDataReleasesTheMemoryOfTheProfileMaps) {
    fillEverything(parser);
    parser.clearProfileData();
    auto const maps = hashMaps(parser);
    for (std::size_t i = 0; i < 5; ++i)
        expectFresh(maps[i]);
    EXPECT_EQ(parser.currentFiles().capacity(), 0U);
}

TEST_F(LifeCycle, ResetFileContextForgetsWhatHoldsForOneFileOnly) {
    auto const fresh = parser.dump();
    fillEverything(parser);
    auto const filled = parser.dump();
    TraceRecorder const trace;
    parser.resetFileContext();
    EXPECT_EQ(parser.dump(), with(filled, fresh, {"group", "conditional", "aliases"}));
    EXPECT_EQ(parser.perFileAliases().bucket_count(), 1U);
    EXPECT_EQ(trace.at(8).size(), 1U);
}

// --- the cycle as a whole ---

void writeSmallDevice(support::Device& device) {
    device.preinit("Sys", "CONFIG:sys/clock,Clock\nfan/%cellId/%slot,Fan,createOnMount\n");
    device.profile("A", "agentName:Fan-%slot\nCondition:on\nfan/%cellId/%slot,Fan,r\nfoo\n");
    device.profile("B", "agentName:Sys\nrootFlags:w\nconnectionFlags:S\nsubAgent:Fan\nactiveMount\n"
                        "noDefaultMountGroup\nMountGroup:g,7\nsys/clock,Clock,rw\n");
}

TEST(LifeCycleOfADevice, InitialisingAgainRebuildsTheSameState) {
    support::CleanEnvironment const environment{};
    support::Device device;
    writeSmallDevice(device);
    DumpableParser parser(device.preinitDir(), device.profileDir());
    parser.doInit();
    auto first = parser.dump();
    auto const firstFaults = support::faultList(parser);
    parser.unDoInit();
    parser.doInit();
    auto second = parser.dump();
    for (auto const* kept : {"faults", "titles"}) {
        first.erase(kept);
        second.erase(kept);
    }
    EXPECT_EQ(second, first);

    auto twice = firstFaults;
    twice.insert(twice.end(), firstFaults.begin(), firstFaults.end());
    EXPECT_EQ(support::faultList(parser), twice);
}

TEST(LifeCycleOfADevice, AllContainersDrawOnTheSlabNamedMountFileInfo) {
    auto& slab = MemSlab::slab("mountFileInfo");
    EXPECT_EQ(&Kelda::mountFileInfoSlab(), &slab);
    DumpableParser parser;
    auto const expectSlab = [&slab](auto const& container) {
        EXPECT_EQ(&container.get_allocator().slab(), &slab);
    };
    expectSlab(parser.pathTypeMap());
    expectSlab(parser.pathAttrMap());
    expectSlab(parser.configInfos());
    expectSlab(parser.mountGroupPathsMap());
    expectSlab(parser.profileFilePathsMap());
    expectSlab(parser.pathMountArgsMap());
    expectSlab(parser.intermediatePaths());
    expectSlab(parser.currentFiles());
    expectSlab(parser.perFileAliases());
    expectSlab(parser.predefinedAliases());
}

TEST(LifeCycleOfADevice, DestructionReleasesEverythingWithoutUnDoInit) {
    auto const before = Kelda::mountFileInfoSlab().bytesInUse();
    auto parser = std::make_unique<DumpableParser>();
    fillEverything(*parser);
    parser->handleDoInit();
    TraceRecorder const trace;
    parser.reset();
    EXPECT_EQ(Kelda::mountFileInfoSlab().bytesInUse(), before);
    EXPECT_FALSE(trace.has(2, "Cleaning up memory and setting isInitialized_ to false"));
}

} // namespace
