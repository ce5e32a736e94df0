// Where the type of a path comes from.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ExplainedDevice.h"
#include "support/Corpus.h"

namespace {

using support::ExplainedDevice;
using testing::SizeIs;

TEST(PathDeclarations, TheLastLineOfAWildcardPathGivesTheType) {
    ExplainedDevice device;
    device.preinit("A", "a/%cellId,Old\n").preinit("B", "# comment\nA/x,T\na/%peerCellId,New\n");
    auto const paths = device.declarations("a/7");
    ASSERT_THAT(paths, SizeIs(1));
    EXPECT_EQ(paths[0].path, "a/*");
    EXPECT_EQ(paths[0].type, "New");
    ASSERT_THAT(paths[0].lines, SizeIs(2));
    EXPECT_EQ(device.shown(paths[0].lines[0].place), "preinit/A:1");
    EXPECT_EQ(device.shown(paths[0].lines[1].place), "preinit/B:3");
    EXPECT_EQ(paths[0].lines[1].path, "a/%peerCellId");
}

TEST(PathDeclarations, TellAttributesAndConfigPaths) {
    ExplainedDevice device;
    device.preinit("P", "a/%x,T,createonmount\nCONFIG:b,T\nc,T,createOnStandby\n");
    EXPECT_EQ(device.declarations("a/1")[0].lines[0].attribute, "createOnMount");
    EXPECT_FALSE(device.declarations("a/1")[0].isConfig);
    EXPECT_EQ(device.declarations("b")[0].lines[0].attribute, "");
    EXPECT_TRUE(device.declarations("b")[0].isConfig);
    EXPECT_EQ(device.declarations("c")[0].lines[0].attribute, "createOnStandby");
}

TEST(PathDeclarations, TheFirstLineBelowMakesADirectory) {
    ExplainedDevice device;
    device.preinit("P", "ab/c,T\na/%x/y,T,createOnMount\na/b/c,T\na/b/d,T\n");
    auto const paths = device.declarations("a");
    ASSERT_THAT(paths, SizeIs(1));
    EXPECT_EQ(paths[0].type, "Fen::Dir");
    EXPECT_THAT(paths[0].lines, SizeIs(0));
    ASSERT_TRUE(paths[0].directoryBecauseOf);
    EXPECT_EQ(device.shown(paths[0].directoryBecauseOf->place), "preinit/P:3");
}

// The ancestor that stops it has a type but gave none to what is above it.
TEST(PathDeclarations, ADirectoryEndsAtTheFirstAncestorWithAType) {
    ExplainedDevice device;
    device.preinit("P", "a/%x,T,createOnMount\na/%cellId/b,T\n");
    EXPECT_THAT(device.declarations("a"), SizeIs(0));
}

TEST(PathDeclarations, AnOwnLineOutdoesThoseBelow) {
    ExplainedDevice device;
    device.preinit("P", "a/b,T\na,Mine\na/c,T\n");
    auto const paths = device.declarations("a");
    ASSERT_THAT(paths, SizeIs(1));
    EXPECT_EQ(paths[0].type, "Mine");
    EXPECT_FALSE(paths[0].directoryBecauseOf);
}

TEST(PathDeclarations, RefusedLinesDeclareNothing) {
    ExplainedDevice device;
    device.preinit("P", "a/%x,T\nCONFIG:b,T,createOnMount\n");
    EXPECT_THAT(device.declarations("a/1"), SizeIs(0));
    EXPECT_THAT(device.declarations("b"), SizeIs(0));
}

// What is told is what the parser knows, for every path of a large device.
TEST(PathDeclarations, AgreeWithTheParserAboutEveryType) {
    SKIP_WITHOUT_CORPUS();
    support::CleanEnvironment const environment;
    auto const directory = support::corpusDir("openconfig");
    KeldaDatabase::DatabaseMountFileInfo parser((directory / "preinit").string(),
                                                (directory / "profiles").string());
    KeldaDatabase::PlaceReader places(parser.device());
    std::size_t step = 0;
    for (auto const& [path, type] : parser.pathTypeMap()) {
        if (++step % 40 != 0)
            continue;
        std::string told;
        for (auto const& declared :
             declarationsOf(parser.device(), KeldaDatabase::AskedPath(path.view()), places))
            if (declared.path == path.view())
                told = declared.type;
        EXPECT_EQ(told, type.view()) << path;
    }
}

} // namespace
