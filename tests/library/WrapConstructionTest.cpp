// How the published entity is made, and which parser it makes.
#include <array>
#include <span>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <KeldaBase/AgentMountFileInfo.h>

#include "support/ChangedRoot.h"
#include "support/CleanEnvironment.h"
#include "support/PublishedDevice.h"

namespace {

using Kelda::agentMountFileInfoWrapFactory;
using support::strings;
using support::textOf;
using support::Wrap;
using testing::ElementsAre;
using testing::IsEmpty;

using Arguments = std::array<Rook::String, 6>;

Rook::String stringForm(Rook::String const& text) {
    return Fen::valueToStrep(text);
}

// Arguments, in their string forms, that make an entity.
Arguments goodArguments() {
    return {Fen::valueToStrep(false), stringForm("F"), stringForm(""),
            stringForm(""),           stringForm(""),  Fen::valueToStrep(true)};
}

class WrapConstruction : public testing::Test {
  protected:
    support::CleanEnvironment environment;
    support::PublishedDevice device;
};

TEST_F(WrapConstruction, ANewEntityHasTheAttributesThatItWasGiven) {
    auto const wrap = agentMountFileInfoWrapFactory(true, "Fan-3", "Other", "/pre", "/pro", false);
    EXPECT_TRUE(wrap->dontMergeFlags());
    EXPECT_FALSE(wrap->loadMountProfile());
    EXPECT_EQ(wrap->agentString(), "Fan-3");
    EXPECT_EQ(wrap->overrideAgentString(), "Other");
    EXPECT_EQ(wrap->preinitDir(), "/pre");
    EXPECT_EQ(wrap->profileDir(), "/pro");
    auto const other = agentMountFileInfoWrapFactory(false, "Up", "", "", "", true);
    EXPECT_FALSE(other->dontMergeFlags());
    EXPECT_TRUE(other->loadMountProfile());
    EXPECT_EQ(other->agentString(), "Up");
    EXPECT_EQ(other->overrideAgentString(), "");
}

TEST_F(WrapConstruction, ANewEntityIsInitialisedAndOutsideOfItsContainer) {
    auto const wrap = device.wrap();
    EXPECT_TRUE(wrap->initialized());
    EXPECT_FALSE(wrap->calledFromContainer());
    EXPECT_TRUE(wrap->mountFileInfoPtr() != nullptr);
    EXPECT_EQ(wrap->references(), 1U);
    EXPECT_FALSE(wrap->isUnderDestruction());
}

TEST_F(WrapConstruction, TheConstructorMakesTheSameEntityAsTheFactory) {
    Wrap const wrap = new Kelda::AgentMountFileInfoWrap(false, "Fan-3", "", device.preinitDir(),
                                                        device.profileDir(), true);
    EXPECT_TRUE(wrap->initialized());
    EXPECT_EQ(textOf(wrap->getMountPathInfo("slot/3")), "slot/3 Slot rw");
}

TEST_F(WrapConstruction, TheParserIsAnAgentSideOneWithTheEntitysArguments) {
    for (bool const dontMerge : {false, true}) {
        auto const wrap = agentMountFileInfoWrapFactory(dontMerge, "F", "", "/pre", "/pro", true);
        auto const* const parser =
            dynamic_cast<Kelda::AgentMountFileInfo*>(wrap->mountFileInfoPtr());
        ASSERT_NE(parser, nullptr);
        EXPECT_EQ(parser->dontMergeFlags(), dontMerge);
        EXPECT_EQ(parser->preinitDir(), "/pre");
        EXPECT_EQ(parser->keldaMountProfileDir(), "/pro");
        EXPECT_EQ(parser->defaultGroupName(), "DefaultMountGroup");
    }
}

TEST_F(WrapConstruction, TheParserHasTheAgentQueuedAndNothingLoaded) {
    auto const wrap = device.wrap("Fan-3");
    auto& parser = *wrap->mountFileInfoPtr();
    EXPECT_FALSE(parser.isInitialized());
    EXPECT_THAT(parser.pathTypeMap(), IsEmpty());
    EXPECT_THAT(strings(parser.getAgentStrings()), ElementsAre("Fan-3"));
}

TEST_F(WrapConstruction, EmptyDirectoriesStandForTheDefaultOnes) {
    struct Row {
        char const* preinitDir;
        char const* profileDir;
        char const* parsersPreinitDir;
        char const* parsersProfileDir;
    };
    for (auto const& row : std::vector<Row>{
             {"", "", "/usr/lib64/preinit", "/usr/lib64/KeldaMountProfiles"},
             {"/pre", "", "/pre", "/usr/lib64/KeldaMountProfiles"},
             {"", "/pro", "/usr/lib64/preinit", "/pro"},
         }) {
        auto const wrap =
            agentMountFileInfoWrapFactory(false, "F", "", row.preinitDir, row.profileDir, true);
        EXPECT_EQ(wrap->mountFileInfoPtr()->preinitDir(), row.parsersPreinitDir);
        EXPECT_EQ(wrap->mountFileInfoPtr()->keldaMountProfileDir(), row.parsersProfileDir);
        EXPECT_EQ(wrap->preinitDir(), row.preinitDir) << "the attribute stays as it was given";
        EXPECT_EQ(wrap->profileDir(), row.profileDir);
    }
}

TEST_F(WrapConstruction, TheDefaultDirectoriesAreRead) {
    support::TemporaryDirectory root;
    root.write("usr/lib64/preinit/Base", "a/b,T\nsys/clock,T\neach/%agentString,T,createOnMount\n");
    root.write("usr/lib64/KeldaMountProfiles/Fan", "agentName: Fan\na/b,T,rw\n");
    root.write("usr/lib64/KeldaMountProfiles/DefaultMountGroup", "sys/clock,T,r\n");
    root.write("usr/lib64/KeldaMountProfiles/DefaultMountGroupPerAgent", "each/%agentString,T,r\n");
    auto const published = support::inChangedRoot(root.path(), [] {
        auto const wrap = agentMountFileInfoWrapFactory(false, "Fan", "", "", "", true);
        auto const mounts = wrap->getMountPathInfoAll("Fan");
        std::string lines;
        for (auto const& info : *mounts)
            lines += textOf(info) + "\n";
        return lines;
    });
    EXPECT_EQ(published, "a/b T rw\neach/Fan T r\nsys/clock T r\n");
}

TEST_F(WrapConstruction, ANewEntityHasTwoEmptyCollections) {
    auto const wrap = device.wrap();
    ASSERT_TRUE(wrap->configPathCol() != nullptr);
    ASSERT_TRUE(wrap->preinitPathCol() != nullptr);
    EXPECT_TRUE(wrap->configPathCol()->empty());
    EXPECT_TRUE(wrap->preinitPathCol()->empty());
    EXPECT_EQ(wrap->configPathCol()->references(), 1U);
    EXPECT_EQ(wrap->preinitPathCol()->references(), 1U);
}

// --- generic construction ---

TEST_F(WrapConstruction, AListOfArgumentsMakesTheSameEntityAsTheFactory) {
    Arguments const arguments{Fen::valueToStrep(true),
                              Fen::valueToStrep(Rook::String("Fan-\"3\"")),
                              Fen::valueToStrep(Rook::String("Other")),
                              Fen::valueToStrep(Rook::String(device.preinitDir())),
                              Fen::valueToStrep(Rook::String("")),
                              Fen::valueToStrep(false)};
    auto const wrap = agentMountFileInfoWrapFactory(arguments);
    EXPECT_TRUE(wrap->dontMergeFlags());
    EXPECT_EQ(wrap->agentString(), "Fan-\"3\"");
    EXPECT_EQ(wrap->overrideAgentString(), "Other");
    EXPECT_EQ(wrap->preinitDir(), device.preinitDir());
    EXPECT_EQ(wrap->profileDir(), "");
    EXPECT_FALSE(wrap->loadMountProfile());
    EXPECT_TRUE(wrap->initialized());
    EXPECT_EQ(wrap->mountFileInfoPtr()->keldaMountProfileDir(), "/usr/lib64/KeldaMountProfiles");
}

TEST_F(WrapConstruction, AListOfAnyOtherLengthIsRefused) {
    auto const good = goodArguments();
    std::vector<Rook::String> arguments(good.begin(), good.end());
    arguments.push_back(Fen::valueToStrep(true));
    for (std::size_t count : {0U, 1U, 5U, 7U})
        EXPECT_THROW(agentMountFileInfoWrapFactory(std::span(arguments).first(count)),
                     Fen::AttributeFormatException)
            << count;
    EXPECT_TRUE(agentMountFileInfoWrapFactory(std::span(arguments).first(6)) != nullptr);
}

TEST_F(WrapConstruction, AnArgumentThatCannotBeReadIsRefused) {
    auto const good = goodArguments();
    for (std::size_t i = 0; i < good.size(); ++i)
        for (char const* const bad : {"", "F", "1", "\"", "true false", "\"a\" b"}) {
            auto arguments = good;
            arguments[i] = bad;
            EXPECT_THROW(agentMountFileInfoWrapFactory(arguments), Fen::AttributeFormatException)
                << "argument " << i + 1 << ": " << bad;
        }
}

TEST_F(WrapConstruction, ATruthValueIsNoTextAndATextNoTruthValue) {
    auto const good = goodArguments();
    for (std::size_t i = 0; i < good.size(); ++i) {
        auto arguments = good;
        arguments[i] = i == 0 || i == 5 ? stringForm("true") : Fen::valueToStrep(true);
        EXPECT_THROW(agentMountFileInfoWrapFactory(arguments), Fen::AttributeFormatException)
            << "argument " << i + 1;
    }
}

} // namespace
