// Faults in files, and questions about what is not there: they leave the operation that met them
// with the parser's text, and the entity as it was.
#include <algorithm>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/CleanEnvironment.h"
#include "support/LenientParser.h"
#include "support/MountRecords.h"
#include "support/PublishedDevice.h"
#include "support/Thrown.h"
#include "support/TraceRecorder.h"

namespace {

using Kelda::AgentMountFileInfoWrap;
using support::elementsOf;
using support::faultIn;
using support::loadedAgents;
using support::nothingThrown;
using support::thrownText;
using support::Wrap;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

using Elements = std::vector<std::string>;

// An operation that makes the parser load, and its answer as text.
struct Operation {
    char const* name;
    std::function<Elements(AgentMountFileInfoWrap&)> ask;
};

std::vector<Operation> const loadingOperations{
    {"getMountPathInfo",
     [](auto& wrap) { return Elements{support::textOf(wrap.getMountPathInfo("slot/3"))}; }},
    {"getMountPathInfoAll",
     [](auto& wrap) { return elementsOf(wrap.getMountPathInfoAll("Fan-3")); }},
    {"getMountPathInfoFile",
     [](auto& wrap) { return elementsOf(wrap.getMountPathInfoFile("Fan*", true)); }},
    {"getMountPathInfoGroup",
     [](auto& wrap) { return elementsOf(wrap.getMountPathInfoGroup("Fan::g")); }},
    {"getConfigPathInfo",
     [](auto& wrap) {
         auto lines = elementsOf(wrap.getConfigPathInfo());
         std::sort(lines.begin(), lines.end());
         return lines;
     }},
    {"getPreinitPathInfo", [](auto& wrap) { return elementsOf(wrap.getPreinitPathInfo()); }},
    {"fileIsLoaded",
     [](auto& wrap) { return Elements{wrap.fileIsLoaded("Fan") ? "loaded" : "not loaded"}; }},
};

std::vector<Elements> answersOf(AgentMountFileInfoWrap& wrap) {
    std::vector<Elements> answers;
    for (auto const& operation : loadingOperations)
        answers.push_back(operation.ask(wrap));
    return answers;
}

struct Spoiling {
    char const* file; // below the device's directory
    char const* text;
    std::string fault;
};

std::vector<Spoiling> const spoilings{
    {"preinit/Base", "a/b,T\n\nnonsense\n", faultIn("Base", 3, "preinit syntax error: nonsense")},
    {"preinit/More", "CONFIG:x/%y,T,createOnMount\n",
     faultIn("More", 1, "alias found in preinit CONFIG path: x/%y")},
    {"profiles/Fan", "agentName: Fan-%slot\nslot/%slot,Slot,rw\nnonsense\n",
     faultIn("Fan", 3, "syntax error: 'nonsense'")},
    {"profiles/Shared", "a/b,T,r\na/c,T,rx\n",
     faultIn("Shared", 2, "Encountered unknown mount flag x")},
    {"profiles/DefaultMountGroup", "alias:%x=%y\n",
     faultIn("DefaultMountGroup", 1, "No such alias defined: '%y'")},
};

class WrapFaults : public testing::Test {
  protected:
    static void spoil(support::Device const& device, Spoiling const& spoiling) {
        device.directory().write(spoiling.file, spoiling.text);
    }
    // Gives the file the text that it has in a good device, or none.
    void repair(support::Device const& target, Spoiling const& spoiling) const {
        std::filesystem::remove(target.directory() / spoiling.file);
        auto const original = device.directory() / spoiling.file;
        if (std::filesystem::exists(original))
            std::filesystem::copy_file(original, target.directory() / spoiling.file);
    }

    support::CleanEnvironment environment;
    support::PublishedDevice device;
};

// What an entity shows of itself, but for what its parser knows.
std::string stateOf(AgentMountFileInfoWrap const& wrap) {
    return fmt::format("{} {} {} {} '{}' '{}' '{}' '{}' {} {} {} {} {} {}", wrap.dontMergeFlags(),
                       wrap.loadMountProfile(), wrap.calledFromContainer(), wrap.initialized(),
                       wrap.agentString(), wrap.overrideAgentString(), wrap.preinitDir(),
                       wrap.profileDir(), fmt::ptr(wrap.mountFileInfoPtr()),
                       fmt::ptr(wrap.configPathCol().get()), fmt::ptr(wrap.preinitPathCol().get()),
                       wrap.configPathCol()->size(), wrap.preinitPathCol()->size(),
                       wrap.references());
}

// --- faults in files ---

TEST_F(WrapFaults, NothingFailsBeforeSomethingIsRead) {
    spoil(device, spoilings.front());
    EXPECT_EQ(thrownText([&] {
                  auto const wrap = device.wrap();
                  wrap->doInit();
                  wrap->addAgent("Up", "");
                  wrap->isLikelyTest();
                  wrap->calledFromContainerIs(true);
                  wrap->isLikelyTest();
                  wrap->configPathColIs();
                  wrap->preinitPathColDel();
                  wrap->disableUnDoInit();
                  wrap->handleDestruction();
                  wrap->doInit();
              }),
              nothingThrown);
}

TEST_F(WrapFaults, AFaultLeavesWhicheverOperationLoads) {
    for (auto const& spoiling : spoilings)
        for (auto const& operation : loadingOperations) {
            support::PublishedDevice broken;
            spoil(broken, spoiling);
            auto const wrap = broken.wrap();
            EXPECT_EQ(thrownText([&] { operation.ask(*wrap); }), spoiling.fault)
                << operation.name << ", " << spoiling.file;
            EXPECT_THAT(wrap->mountFileInfoPtr()->exceptions(), SizeIs(1)) << operation.name;
        }
}

TEST_F(WrapFaults, AFaultLeavesTheEntityAsItWas) {
    for (auto const& operation : loadingOperations) {
        support::PublishedDevice broken;
        spoil(broken, spoilings[2]);
        auto const wrap = broken.wrap("Fan-3", "Other");
        wrap->calledFromContainerIs(true);
        auto const before = stateOf(*wrap);
        EXPECT_THROW(operation.ask(*wrap), Fen::AgentException) << operation.name;
        EXPECT_EQ(stateOf(*wrap), before) << operation.name;
    }
}

TEST_F(WrapFaults, AFaultIsMetAgainByTheNextOperation) {
    for (auto const& operation : loadingOperations) {
        support::PublishedDevice broken;
        spoil(broken, spoilings[3]);
        auto const wrap = broken.wrap();
        for (int round = 0; round < 2; ++round)
            EXPECT_EQ(thrownText([&] { operation.ask(*wrap); }), spoilings[3].fault)
                << operation.name;
        EXPECT_EQ(thrownText([&] { wrap->getPreinitPathInfo(); }), spoilings[3].fault);
    }
}

TEST_F(WrapFaults, AfterRepairTheNextOperationAnswersAsIfNothingHadHappened) {
    auto const expected = answersOf(*device.wrap());
    for (auto const& spoiling : spoilings)
        for (auto const& operation : loadingOperations) {
            support::PublishedDevice target;
            spoil(target, spoiling);
            auto const wrap = target.wrap();
            EXPECT_THROW(operation.ask(*wrap), Fen::AgentException);
            repair(target, spoiling);
            EXPECT_EQ(answersOf(*wrap), expected) << operation.name << ", " << spoiling.file;
        }
}

TEST_F(WrapFaults, ADirectoryThatIsNotThereIsAFault) {
    auto const wrap = Kelda::agentMountFileInfoWrapFactory(false, "Fan-3", "", "/nonexistent/pre",
                                                           device.profileDir(), true);
    EXPECT_EQ(thrownText([&] { wrap->fileIsLoaded("Fan"); }),
              "Cannot open directory /nonexistent/pre");
    auto const other = Kelda::agentMountFileInfoWrapFactory(false, "Fan-3", "", device.preinitDir(),
                                                            "/nonexistent/pro", true);
    EXPECT_EQ(thrownText([&] { other->fileIsLoaded("Fan"); }),
              "Cannot open directory /nonexistent/pro");
}

TEST_F(WrapFaults, AnEntityThatCouldNotLoadGoesQuietly) {
    spoil(device, spoilings.back());
    auto wrap = device.wrap();
    EXPECT_THROW(wrap->getConfigPathInfo(), Fen::AgentException);
    EXPECT_EQ(thrownText([&] { wrap = nullptr; }), nothingThrown);
}

// Naming the agents in a trace loads them.
TEST_F(WrapFaults, TheTraceOfTheAgentStringsMayMeetAFault) {
    spoil(device, spoilings.front());
    auto const wrap = device.wrap();
    wrap->calledFromContainerIs(true);
    support::TraceRecorder const trace("MountFileInfoWrap");
    EXPECT_EQ(thrownText([&] { wrap->isLikelyTest(); }), spoilings.front().fault);
    EXPECT_THAT(trace.at(5), ElementsAre("isLikelyTest"));
}

// --- agents that are added late ---

TEST_F(WrapFaults, AnAgentAddedAfterLoadingBringsItsFaultsAtOnce) {
    auto const wrap = device.wrap();
    wrap->getMountPathInfo("slot/3");
    device.profile("Late", "agentName: Late\nnonsense\n");
    EXPECT_EQ(thrownText([&] { wrap->addAgent("Late", ""); }),
              faultIn("Late", 2, "syntax error: 'nonsense'"));
    EXPECT_EQ(elementsOf(wrap->getMountPathInfoAll("Fan-3")),
              elementsOf(device.wrap()->getMountPathInfoAll("Fan-3")))
        << "the others are as they were";
    device.profile("Late", "agentName: Late\nconf/y,Config::Y,r\n");
    wrap->mountFileInfoPtr()->unDoInit();
    EXPECT_THAT(elementsOf(wrap->getMountPathInfoAll("Late")),
                testing::Contains("conf/y Config::Y r"));
}

TEST_F(WrapFaults, AnotherOverrideAfterLoadingIsAFault) {
    auto const wrap = device.wrap("Fan-3", "Other");
    wrap->addAgent("Fan-3", "Another");
    EXPECT_TRUE(wrap->fileIsLoaded("Fan"));
    EXPECT_EQ(thrownText([&] { wrap->addAgent("Fan-3", "Third"); }),
              "reloaded agent Fan-3 with override Third rather than Another after doInit()");
    EXPECT_EQ(thrownText([&] { wrap->addAgent("Fan-3", "Another"); }), nothingThrown);
    EXPECT_EQ(wrap->overrideAgentString(), "Other") << "the attribute is the constructor's";
}

// --- questions about what is not there ---

TEST_F(WrapFaults, APathThatNothingMountsIsAFault) {
    auto const wrap = device.wrap();
    wrap->addAgent("Fan-5", "");
    for (char const* const path : {"slot/4", "slot", "a/b/c", "A/B", "slot/%slot", ""})
        EXPECT_EQ(thrownText([&] { wrap->getMountPathInfo(path); }),
                  std::string("mountInfo: no such path: ") + path + loadedAgents(" Fan-3, Fan-5"));
}

TEST_F(WrapFaults, OnlyOneSlashAtTheEndOfAPathIsDropped) {
    auto const wrap = device.wrap();
    EXPECT_EQ(thrownText([&] { wrap->getMountPathInfo("slot/4/"); }),
              "mountInfo: no such path: slot/4" + loadedAgents(" Fan-3"));
    EXPECT_EQ(thrownText([&] { wrap->getMountPathInfo("slot/3//"); }),
              "mountInfo: no such path: slot/3/" + loadedAgents(" Fan-3"));
    EXPECT_EQ(thrownText([&] { wrap->getMountPathInfo("/"); }),
              "mountInfo: no such path: " + loadedAgents(" Fan-3"));
}

TEST_F(WrapFaults, AFileThatBroughtNoPathIsAFault) {
    auto const wrap = device.wrap();
    for (bool const withIncludes : {false, true}) {
        for (char const* const name : {"Up", "fan", "profiles/Fan", ""})
            EXPECT_EQ(thrownText([&] { wrap->getMountPathInfoFile(name, withIncludes); }),
                      std::string("profileFilePaths: no such file: ") + name +
                          loadedAgents(" Fan-3"));
        for (char const* const pattern : {"Up*", "Fan**", "*Fan*"})
            EXPECT_EQ(thrownText([&] { wrap->getMountPathInfoFile(pattern, withIncludes); }),
                      std::string("profileFilePaths: no such files: ") + pattern +
                          loadedAgents(" Fan-3"));
    }
}

TEST_F(WrapFaults, AGroupThatIsNotThereIsAFault) {
    auto const wrap = device.wrap();
    for (char const* const name : {"Fan::h", "Fan-3::g", "fan::g", "g", "::g", "Fan", ""})
        EXPECT_EQ(thrownText([&] { wrap->getMountPathInfoGroup(name); }),
                  std::string("mountGroupPaths: no such mount group: ") + name +
                      loadedAgents(" Fan-3"));
}

TEST_F(WrapFaults, AQuestionAboutWhatIsNotThereSpoilsNoOther) {
    auto const wrap = device.wrap();
    auto const before = stateOf(*wrap);
    EXPECT_THROW(wrap->getMountPathInfo("nowhere"), Fen::AgentException);
    EXPECT_THROW(wrap->getMountPathInfoFile("nowhere", true), Fen::AgentException);
    EXPECT_THROW(wrap->getMountPathInfoGroup("nowhere"), Fen::AgentException);
    EXPECT_EQ(stateOf(*wrap), before);
    EXPECT_EQ(answersOf(*wrap), answersOf(*device.wrap()));
    EXPECT_EQ(wrap->mountFileInfoPtr()->doInitCount(), 1);
}

TEST_F(WrapFaults, APathRecordedWithASlashAtItsEndIsPublishedSoButNotFoundAlone) {
    auto const wrap = device.wrap();
    wrap->mountFileInfoPtr()->recordMountArgsExternal("a/new/", support::mount("T", "w"), true,
                                                      false);
    auto const info = wrap->getMountPathInfoAll("Fan-3")->mountPathData("a/new/");
    ASSERT_NE(info, nullptr);
    EXPECT_EQ(*info, Kelda::MountPathInfo("a/new/", "T", "w"));
    EXPECT_EQ(thrownText([&] { wrap->getMountPathInfo("a/new/"); }),
              "mountInfo: no such path: a/new" + loadedAgents(" Fan-3"));
}

// --- collections that cannot be filled ---

// Ten paths, in a device without any other.
class WrapHalfFilled : public testing::Test {
  protected:
    static constexpr int count = 10;
    static std::string pathOf(int i) { return "path/" + std::to_string(i); }

    // The parser of a new entity that knows ten paths, all but one of them with a type.
    Kelda::MountFileInfo& parserWithoutType(int missing) {
        wrap = Kelda::agentMountFileInfoWrapFactory(false, "Fan", "", device.preinitDir(),
                                                    device.profileDir(), true);
        auto& parser = *wrap->mountFileInfoPtr();
        parser.doInit();
        for (int i = 0; i < count; ++i) {
            parser.pathAttrMapIs(pathOf(i), Kelda::PreinitAttr::none);
            parser.addPathConfigInfo(pathOf(i), true, true);
            if (i != missing)
                parser.pathTypeMapIs(pathOf(i), "T");
        }
        return parser;
    }

    support::CleanEnvironment environment;
    support::Device device;
    Wrap wrap;
};

TEST_F(WrapHalfFilled, ConfigPathsStayEmptyAndAreFilledOnceTheyCanBe) {
    for (int missing = 0; missing < count; ++missing) {
        auto& parser = parserWithoutType(missing);
        auto const collection = wrap->configPathCol();
        for (int round = 0; round < 2; ++round) {
            EXPECT_EQ(thrownText([&] { wrap->getConfigPathInfo(); }),
                      "getType: no type info for path " + pathOf(missing));
            EXPECT_TRUE(collection->empty()) << missing;
        }
        parser.pathTypeMapIs(pathOf(missing), "T");
        EXPECT_TRUE(wrap->getConfigPathInfo() == collection);
        EXPECT_EQ(collection->size(), static_cast<std::size_t>(count));
    }
}

TEST_F(WrapHalfFilled, PreinitPathsStayEmptyAndAreFilledOnceTheyCanBe) {
    for (int missing = 0; missing < count; ++missing) {
        auto& parser = parserWithoutType(missing);
        auto const collection = wrap->preinitPathCol();
        for (int round = 0; round < 2; ++round) {
            EXPECT_EQ(thrownText([&] { wrap->getPreinitPathInfo(); }),
                      "getType: no type info for path " + pathOf(missing));
            EXPECT_TRUE(collection->empty()) << missing;
        }
        parser.pathTypeMapIs(pathOf(missing), "T");
        EXPECT_TRUE(wrap->getPreinitPathInfo() == collection);
        EXPECT_EQ(collection->size(), static_cast<std::size_t>(count));
    }
}

TEST_F(WrapHalfFilled, AnAttributeWithoutATextIsAFault) {
    auto& parser = parserWithoutType(-1);
    for (int i = 0; i < count; ++i) {
        parser.pathAttrMapIs(pathOf(i), Kelda::PreinitAttr::invalid);
        EXPECT_EQ(thrownText([&] { wrap->getPreinitPathInfo(); }), "Invalid preinit path attr");
        EXPECT_TRUE(wrap->preinitPathCol()->empty()) << i;
        parser.pathAttrMapIs(pathOf(i), Kelda::PreinitAttr::none);
    }
    EXPECT_EQ(wrap->getPreinitPathInfo()->size(), static_cast<std::size_t>(count));
}

TEST_F(WrapHalfFilled, AFlavourThatGoesOnPublishesAnEmptyType) {
    parserWithoutType(-1);
    std::unique_ptr<Kelda::MountFileInfo> const old(wrap->mountFileInfoPtr());
    support::LenientParser* const lenient = device.lenient().release();
    wrap->mountFileInfoPtrIs(lenient);
    lenient->doInit();
    lenient->pathAttrMapIs("a/b", Kelda::PreinitAttr::createOnMount);
    lenient->addPathConfigInfo("a/c", true, true);
    EXPECT_THAT(elementsOf(wrap->getPreinitPathInfo()), ElementsAre("a/b  createOnMount"));
    EXPECT_THAT(elementsOf(wrap->getConfigPathInfo()), ElementsAre("a/c "));
    EXPECT_THAT(support::messages(*lenient), ElementsAre("getType: no type info for path a/b",
                                                         "getType: no type info for path a/c"));
}

} // namespace
