// The two tables of aliases, the predefined ones and those of the file being read: what they hold,
// how they are searched and how long their entries last.
#include <string>
#include <vector>

#include <Fen/SystemName.h>
#include <KeldaBase/DynCell.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/Aliases.h"
#include "support/Device.h"
#include "support/LenientParser.h"
#include "support/TraceRecorder.h"

namespace {

using support::aliasOf;
using support::defineAlias;
using support::LenientParser;
using support::messages;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

std::string ownCell() {
    return std::to_string(DynCell::cellId());
}

TEST(PredefinedAliases, TellTheCellsTheSystemAndTheSlice) {
    LenientParser const parser;
    EXPECT_EQ(aliasOf(parser, "%cellId"), ownCell());
    EXPECT_EQ(aliasOf(parser, "%peerCellId"), std::to_string(DynCell::peerCellId(0)));
    EXPECT_EQ(aliasOf(parser, "%sysname"), Fen::systemName().view());
    EXPECT_EQ(aliasOf(parser, "%sliceId"), "FixedSystem");
}

TEST(PredefinedAliases, AreFourAndKeyedInLowerCase) {
    LenientParser const parser;
    std::vector<std::string> keys;
    for (auto const& [key, value] : parser.predefinedAliases())
        keys.emplace_back(key.view());
    EXPECT_THAT(keys, UnorderedElementsAre("%cellid", "%peercellid", "%sysname", "%sliceid"));
}

TEST(PredefinedAliases, TheCellPathShorthandsAreNoAliases) {
    LenientParser const parser;
    EXPECT_EQ(aliasOf(parser, "%cellPath"), support::noAlias);
    EXPECT_EQ(aliasOf(parser, "%peerCellPath"), support::noAlias);
}

TEST(PredefinedAliases, OutliveTheProfileData) {
    LenientParser parser;
    parser.clearProfileData();
    EXPECT_EQ(aliasOf(parser, "%sliceId"), "FixedSystem");
    EXPECT_EQ(parser.predefinedAliases().size(), 4U);
}

TEST(AliasTables, AreKeyedInLowerCaseAndKeepTheCaseOfValues) {
    LenientParser parser;
    parser.perFileAliasesPushBack("%SlotName", "FanTray");
    parser.predefinedAliasesIs("%RackName", "Rack A");
    EXPECT_EQ(parser.perFileAliases().at("%slotname"), "FanTray");
    EXPECT_EQ(parser.predefinedAliases().at("%rackname"), "Rack A");
}

TEST(AliasTables, ADefinedAliasIsFoundInAnyCase) {
    LenientParser parser;
    defineAlias(parser, "alias:%A=x");
    EXPECT_EQ(aliasOf(parser, "%a"), "x");
    EXPECT_EQ(aliasOf(parser, "%A"), "x");
    EXPECT_EQ(aliasOf(parser, "%CELLID"), ownCell());
    EXPECT_EQ(aliasOf(parser, "%cellid"), ownCell());
}

TEST(AliasTables, ThePercentSignIsPartOfTheName) {
    LenientParser parser;
    defineAlias(parser, "alias:%a=x");
    EXPECT_EQ(aliasOf(parser, "a"), support::noAlias);
    EXPECT_EQ(aliasOf(parser, "%%a"), support::noAlias);
    EXPECT_EQ(aliasOf(parser, "%a "), support::noAlias);
}

TEST(AliasTables, TheLastDefinitionWinsWithoutAWarning) {
    LenientParser parser;
    defineAlias(parser, "alias:%slot=1");
    defineAlias(parser, "alias:%SLOT=2");
    EXPECT_EQ(aliasOf(parser, "%slot"), "2");
    EXPECT_EQ(parser.perFileAliases().size(), 1U);
    EXPECT_THAT(messages(parser), IsEmpty());
}

TEST(AliasTables, AnAliasOfTheFileHidesAPredefinedOne) {
    LenientParser parser;
    defineAlias(parser, "alias:%CELLID=9");
    EXPECT_EQ(aliasOf(parser, "%cellId"), "9");
    EXPECT_EQ(parser.predefinedAliases().at("%cellid"), ownCell());
}

TEST(AliasTables, StoringTracesNameAndValue) {
    LenientParser parser;
    support::TraceRecorder const trace;
    parser.perFileAliasesPushBack("%a", "x");
    parser.predefinedAliasesIs("%b", "y");
    EXPECT_TRUE(trace.has(8, "( key: %a, value: x )"));
    EXPECT_TRUE(trace.has(8, "( key: %b, value: y )"));
}

TEST(AliasTables, ALookupTracesWhereTheAliasWasFound) {
    LenientParser parser;
    parser.perFileAliasesPushBack("%a", "x");
    support::TraceRecorder const trace;
    parser.lookupAlias("%a");
    parser.lookupAlias("%sliceid");
    parser.lookupAlias("%b");
    EXPECT_THAT(trace.at(8),
                ElementsAre("( token : %a )", "( token : %sliceid )", "( token : %b )"));
    EXPECT_THAT(trace.at(9), ElementsAre(" Found %a as x in per-file aliases",
                                         " Found %sliceid as FixedSystem in pre-defined aliases",
                                         " Found no alias for %b"));
}

TEST(AliasLifetime, AnAliasIsForgottenWhenItsProfileHasBeenRead) {
    LenientParser parser;
    parser.declare({"p/*"});
    parser.loadProfile("alias:%a=x\np/%a,T,r\n", "First");
    EXPECT_THAT(parser.perFileAliases(), IsEmpty());
    parser.loadProfile("p/%a,T,r\n", "Second");
    ASSERT_EQ(parser.exceptions().size(), 1U);
    EXPECT_EQ(parser.exceptions()[0],
              (Kelda::MfiException{"Second", "No such alias defined: '%a'", 1}));
}

TEST(AliasLifetime, AHiddenPredefinedAliasIsBackInTheNextProfile) {
    LenientParser parser;
    parser.declare({"cell/*"});
    parser.loadProfile("alias:%cellId=9\ncell/%cellId,T,r\n", "First");
    parser.loadProfile("cell/%cellId,T,r\n", "Second");
    EXPECT_THAT(support::strings(parser.profileFilePathsMap().at("First")), ElementsAre("cell/9"));
    EXPECT_THAT(support::strings(parser.profileFilePathsMap().at("Second")),
                ElementsAre("cell/" + ownCell()));
}

TEST(AliasLifetime, AnAliasThatHidesAPredefinedOneHidesItInIncludedFilesToo) {
    support::Device device;
    device.profile("common", "cell/%cellId,T,r\n");
    auto const parser = device.lenient();
    parser->declare({"cell/*"});
    parser->loadProfile("alias:%cellId=9\nInclude:common\n");
    EXPECT_THAT(messages(*parser), IsEmpty());
    EXPECT_TRUE(parser->pathMountArgsMap().contains("cell/9"));
}

TEST(AliasLifetime, TheEndOfAnIncludedFileForgetsNothing) {
    support::Device device;
    device.profile("common", "p/%a,T,r\n");
    auto const parser = device.lenient();
    parser->declare({"p/*", "q/*"});
    parser->loadProfile("alias:%a=x\nInclude:common\nq/%a,T,r\n");
    EXPECT_THAT(messages(*parser), IsEmpty());
    EXPECT_TRUE(parser->pathMountArgsMap().contains("p/x"));
    EXPECT_TRUE(parser->pathMountArgsMap().contains("q/x"));
}

TEST(AliasLifetime, ClearingProfileDataForgetsTheAliasesOfTheFile) {
    LenientParser parser;
    parser.perFileAliasesPushBack("%a", "x");
    parser.clearProfileData();
    EXPECT_EQ(aliasOf(parser, "%a"), support::noAlias);
}

TEST(AliasLifetime, TheEndOfAFileForgetsItsAliases) {
    LenientParser parser;
    parser.perFileAliasesPushBack("%a", "x");
    parser.resetFileContext();
    EXPECT_EQ(aliasOf(parser, "%a"), support::noAlias);
}

} // namespace
