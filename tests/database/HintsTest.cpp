// What is offered in place of something that a file has wrong.
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "database/DatabaseMountFileInfo.h"
#include "database/findings/Hints.h"
#include "support/CleanEnvironment.h"
#include "support/Device.h"

namespace {

using namespace KeldaDatabase;

// The hints for the faults of a rule, in order.
std::vector<std::string> hintsFor(support::Device const& files, RuleId rule) {
    support::CleanEnvironment const environment;
    DatabaseMountFileInfo parser(files.preinitDir(), files.profileDir());
    auto const& device = parser.device();
    Hints hints(device);
    std::vector<std::string> texts;
    for (auto const& fault : device.faults)
        if (ruleOfMessage(fault.exception.msg.view()) == rule)
            texts.push_back(hints.of(rule, fault));
    return texts;
}

struct HintRow {
    std::string text; // of a file, in which something is wrong once
    std::string hint;
};

void expectHints(RuleId rule, std::string const& preinit, std::vector<HintRow> const& rows) {
    for (auto const& [text, hint] : rows) {
        support::Device device;
        device.preinit("P", preinit).profile("A", "agentName:A-%slot-%name$\n" + text + "\n");
        EXPECT_EQ(hintsFor(device, rule), std::vector{hint}) << text;
    }
}

// --- lines of no kind ---

TEST(HintForALine, NamesTheNearestKeyword) {
    expectHints(RuleId::unknownKeyword, "a,T\n",
                {
                    {"MountGroups: fans", "did you mean 'MountGroup:'?"},
                    {"mountgruop: fans", "did you mean 'MountGroup:'?"},
                    {"Inlcude: shared", "did you mean 'Include:'?"},
                    {"alais: %a = b", "did you mean 'alias:'?"},
                    {"Conditions: x", "did you mean 'Condition:'?"},
                    {"ConditonBlocker: x", "did you mean 'ConditionBlocker:'?"},
                    {"rootFlag: rw", "did you mean 'rootFlags:'?"},
                    {"connectionflag: S", "did you mean 'connectionFlags:'?"},
                    {"subAgents: B", "did you mean 'subAgent:'?"},
                    {"activMount", "did you mean 'activeMount'?"},
                    {"matchActivName", "did you mean 'matchActiveName'?"},
                    {"noDefaultMountGroop", "did you mean 'noDefaultMountGroup'?"},
                });
}

TEST(HintForALine, NamesAKeywordThatLacksItsColon) {
    expectHints(RuleId::unknownKeyword, "a,T\n",
                {
                    {"MountGroup fans", "did you mean 'MountGroup:'?"},
                    {"MOUNTGROUP all the lamps on the front", "did you mean 'MountGroup:'?"},
                    {"Include shared", "did you mean 'Include:'?"},
                    {"alias %a = b", "did you mean 'alias:'?"},
                    {"Condition x", "did you mean 'Condition:'?"},
                    {"ConditionBlocker x", "did you mean 'ConditionBlocker:'?"},
                });
}

TEST(HintForALine, SaysWhatALineOfItsKindConsistsOf) {
    std::string const threeFields = "a path line has three fields: path,type,flags";
    expectHints(RuleId::unknownKeyword, "a,T\n",
                {
                    {"a/b, T", threeFields},
                    {"a, T", threeFields},
                    {"condition/of/a/fan, T", threeFields},
                    {"a=b, T, rw", "a path line holds no '='"},
                    {"alias: %a", "an alias line has a '=': alias:%name=expression"},
                    {"agentName: B", "an agent's name only stands in the first line of a profile"},
                    {"agentNames: B", "an agent's name only stands in the first line of a profile"},
                });
}

TEST(HintForALine, IsNoneForWhatIsLikeNothing) {
    expectHints(RuleId::unknownKeyword, "a,T\n",
                {{"nonsense", ""}, {"x", ""}, {"=", ""}, {":", ""}, {"'", ""}, {"a/b", ""}});
}

TEST(HintForALine, SaysThatAKeywordStandsAlone) {
    expectHints(
        RuleId::textAfterKeyword, "a,T\n",
        {
            {"activeMount: yes", "nothing may follow 'activeMount' in its line"},
            {"MATCHACTIVENAME:", "nothing may follow 'matchActiveName' in its line"},
            {"noDefaultMountGroup, x", "nothing may follow 'noDefaultMountGroup' in its line"},
        });
}

TEST(HintForALine, TellsThatAnIncludeTakesInAProfile) {
    support::Device device;
    device.profile("A", "agentName:A\nInclude:B\n").profile("B", "agentName:B\nalias:%a=b\n");
    EXPECT_EQ(hintsFor(device, RuleId::notAllowedInInclude),
              (std::vector<std::string>{"the Include line takes in a profile", ""}));
}

// --- flags and attributes ---

TEST(HintForAFlag, NamesTheLettersAndTheOneThatDiffersInCase) {
    std::string const letters = "flags are letters of rwcifSDdOAKL and SNAE";
    expectHints(RuleId::flagUnknown, "a,T\n",
                {
                    {"a,T,x", letters},
                    {"a,T,W", "did you mean 'w'? " + letters},
                    {"a,T,o", "did you mean 'O'? " + letters},
                    {"a,T,a", "did you mean 'A'? " + letters},
                    {"a,T,1", letters},
                    {"a,T,r,w", "flags stand side by side, without commas"},
                    {"rootFlags:R", "did you mean 'r'? " + letters},
                    {"rootFlags:\xff", letters},
                });
}

TEST(HintForAConnectionFlag, NamesTheLettersAndTheOneThatDiffersInCase) {
    std::string const letters = "connection flags are letters of SNAE";
    expectHints(RuleId::connectionFlagUnknown, "a,T\n",
                {
                    {"connectionFlags:r", letters},
                    {"connectionFlags:s", "did you mean 'S'? " + letters},
                    {"connectionFlags:S,", "flags stand side by side, without commas"},
                });
}

void expectPreinitHints(RuleId rule, std::vector<HintRow> const& rows) {
    for (auto const& [text, hint] : rows) {
        support::Device device;
        device.preinit("P", text + "\n");
        EXPECT_EQ(hintsFor(device, rule), std::vector{hint}) << text;
    }
}

TEST(HintForAnAttribute, NamesTheNearestOrBoth) {
    std::string const both = "the attributes are createOnMount and createOnStandby";
    expectPreinitHints(
        RuleId::attributeUnknown,
        {
            {"a,T,createOnMont", "did you mean 'createOnMount'?"},
            {"a,T,createonstandbye", "did you mean 'createOnStandby'?"},
            {"a,T,create", both},
            {"a,T,createOnDemand", both},
            {"a,T,", "without an attribute, a preinit line has one comma only"},
            {"a,T,createOnMount,x", "a preinit line has at most three fields: path,type,attribute"},
        });
}

TEST(HintForAToken, NamesTheTokenOfTheCellsThatIsNearlySpeltAlike) {
    expectPreinitHints(RuleId::tokenNeedsCreateOnMount,
                       {
                           {"%celPath/a,T", "did you mean '%cellPath'?"},
                           {"%peerCelPath/a,T", "did you mean '%peerCellPath'?"},
                           {"cell/%cellIdx/a,T", "did you mean '%cellId'?"},
                           {"cell/%cellId/%slot,T", ""},
                           {"%slot/%celPath,T", "did you mean '%cellPath'?"},
                           {"slot/%c/%slotId,T", ""},
                       });
}

// --- aliases ---

TEST(HintForAnAlias, NamesTheNearestThatTheProfileKnows) {
    expectHints(RuleId::aliasUndefined, "a/*,T\na/*/*,T\n",
                {
                    {"a/%slto,T,r", "did you mean '%slot'?"},
                    {"a/%nam,T,r", "did you mean '%name'?"},
                    {"alias:%place=left\na/%palce,T,r", "did you mean '%place'?"},
                    {"alias:%place=left\na/%place2,T,r", "did you mean '%place'?"},
                    {"a/%celId,T,r", "did you mean '%cellId'?"},
                    {"a/%peercell_id,T,r", "did you mean '%peerCellId'?"},
                    {"a/%sysName1,T,r", "did you mean '%sysname'?"},
                    {"a/%slice,T,r", "did you mean '%sliceId'?"},
                    {"a/%agentStr,T,r", "did you mean '%agentString'?"},
                    {"a/%celPath,T,r", "did you mean '%cellPath'?"},
                    {"subAgent:B-%solt", "did you mean '%slot'?"},
                    {"a/%speed,T,r", ""},
                    {"alias:place=left\na/%place,T,r", ""},
                });
}

TEST(HintForAnAlias, SaysWhyANameIsNotKnown) {
    expectHints(RuleId::aliasUndefined, "a/*,T\na/*/*,T\n",
                {
                    {"a/%below,T,r\nalias:%Below=x", "'%Below' is defined further down only"},
                    {"subAgent:%cellPath", "'%cellPath' is known in paths only"},
                    {"alias:%b=%PEERCELLPATH", "'%peerCellPath' is known in paths only"},
                    {"a/%,T,r", "a '%' by itself names no alias"},
                    {"alias:%b=x%slot", "an operand is either an alias or a text without '%'"},
                    {"a/%slotandmore,T,r",
                     "did you mean '%slot'? the name of an alias ends before the first character "
                     "that is no letter, digit or '_'"},
                });
}

TEST(HintForAnAlias, LooksAtNoOtherProfile) {
    support::Device device;
    device.preinit("P", "a/%x,T,createOnMount\n")
        .profile("A", "agentName:A\nalias:%place=left\n")
        .profile("B", "agentName:B\na/%palce,T,r\n");
    EXPECT_EQ(hintsFor(device, RuleId::aliasUndefined), std::vector<std::string>{""});
}

TEST(HintForAnAlias, OfADefaultFileKnowsWhatEveryProfileKnows) {
    support::Device device;
    device.preinit("P", "a/%x,T,createOnMount\n")
        .profile("DefaultMountGroup", "a/%agentSring,T,r\na/%slot,T,r\n");
    EXPECT_EQ(
        hintsFor(device, RuleId::aliasUndefined),
        (std::vector<std::string>{"did you mean '%agentString'?",
                                  "a default file knows no token and no alias of a profile"}));
}

// --- includes ---

TEST(HintForAnInclude, NamesTheNearestFileOrTheOneThatIsPassedOver) {
    for (auto const& [text, hint] : {
             HintRow{"Include:share.fan", "did you mean 'shared.fan'?"},
             {"Include:Shared.Fan", "did you mean 'shared.fan'?"},
             {"Include:other", ""},
             {"Include:old~", "a file 'old~' is there, but passed over"},
         }) {
        support::Device device;
        device.profile("A", "agentName:A\n" + text + "\n")
            .profile("shared.fan", "# nothing\n")
            .profile("othr", "agentName:othr\n")
            .profile("old~", "");
        EXPECT_EQ(hintsFor(device, RuleId::includeNotFound), std::vector{hint}) << text;
    }
}

// --- paths ---

constexpr char const* preinit = "sys/clock,T\n"
                                "sys/location/zone,T\n"
                                "cooling/fan/%fan/speed,T,createOnMount\n"
                                "card/%card/port/%port/state,T,createOnMount\n"
                                "%cellPath/health,T\n"
                                "sys/untyped,\n"
                                "rack/unit-%unit/fan,T,createOnMount\n"
                                "io/a,T\n";

TEST(HintForAPath, NamesTheDeclaredPathThatIsNearlySpeltAlike) {
    expectHints(RuleId::pathWithoutType, preinit,
                {
                    {"Sys/Clock,T,r", "did you mean 'sys/clock'?"},
                    {"sys/clok,T,r", "did you mean 'sys/clock'?"},
                    {"sy/clock,T,r", "did you mean 'sys/clock'?"},
                    {"sys/locations/zone,T,r", "did you mean 'sys/location/zone'?"},
                    {"sys/lokasion/zone,T,r", "did you mean 'sys/location/zone'?"},
                    {"sys//clock,T,r", "did you mean 'sys/clock'?"},
                    {"cooling/fans/%slot/speed,T,r", "did you mean 'cooling/fan/%fan/speed'?"},
                    {"cooling/fan/%slot/Speed,T,r", "did you mean 'cooling/fan/%fan/speed'?"},
                    {"%cellPath/helth,T,r", "did you mean 'cell/%cellId/health'?"},
                    {"rack/unit-7/fan,T,r", "did you mean 'rack/unit-%unit/fan'?"},
                    {"rack/unid-%slot/fan,T,r", "did you mean 'rack/unit-%unit/fan'?"},
                });
}

TEST(HintForAPath, IsNoneWhereNothingIsNear) {
    expectHints(RuleId::pathWithoutType, preinit,
                {
                    {"sys/calendar,T,r", ""},
                    {"sys/clack/zone,T,r", ""},
                    {"sis/clok,T,r", ""},
                    {"io/b,T,r", ""}, // of short names every two are alike
                    {"x,T,r", ""},
                    {",T,r", ""},
                    {"'/'' found in preinit files,T,r", ""},
                    {"%cellId,T,r", ""},
                });
}

TEST(HintForAPath, TellsWhereATokenIsDeclared) {
    auto const hint = [](std::string const& path) {
        return "'" + path + "' is declared: where it has a token, a mount has an alias";
    };
    expectHints(RuleId::pathWithoutType, preinit,
                {
                    {"cooling/fan/left/speed,T,r", hint("cooling/fan/%fan/speed")},
                    {"card/3/port/4/state,T,r", hint("card/%card/port/%port/state")},
                    {"card/%slot/port/4/state,T,r", hint("card/%card/port/%port/state")},
                    {"cell/1/health,T,r", hint("cell/%cellId/health")},
                });
}

TEST(HintForAPath, SaysWhatItsLooksTell) {
    expectHints(
        RuleId::pathWithoutType, preinit,
        {
            {"/sys/clock,T,r", "paths have no leading '/'"},
            {"/nothing/like/it,T,r", "paths have no leading '/'"},
            {"sys/untyped,T,r", "a preinit line declares the path, but gives it no type"},
            {"Condition: at night, at noon, always",
             "a line with two commas is a path line, although it begins with "
             "'Condition:'"},
            {"mountgroup:a,1,2", "a line with two commas is a path line, although it begins with "
                                 "'MountGroup:'"},
        });
}

TEST(HintForAPath, IsNoneWhereNothingIsDeclared) {
    expectHints(RuleId::pathWithoutType, "", {{"sys/clock,T,r", ""}});
}

// --- the other ways to ask ---

TEST(Hint, ForASingleFaultIsTheSame) {
    support::CleanEnvironment const environment;
    support::Device files;
    files.preinit("P", "sys/clock,T\n").profile("A", "agentName:A\nsys/clok,T,r\n");
    DatabaseMountFileInfo parser(files.preinitDir(), files.profileDir());
    auto const& device = parser.device();
    ASSERT_EQ(device.faults.size(), 1U);
    auto const& fault = device.faults.front();
    EXPECT_EQ(hintFor(device, RuleId::pathWithoutType, fault), "did you mean 'sys/clock'?");
    // The message by itself does not tell.
    EXPECT_EQ(hintFor(device, RuleId::pathWithoutType, fault.exception), "");
}

TEST(Hint, OfAMessageNeedsNoDevice) {
    Kelda::MfiException const fault{"A", "Encountered unknown mount flag W", 3};
    EXPECT_EQ(hintFor(Device(), RuleId::flagUnknown, fault),
              "did you mean 'w'? flags are letters of rwcifSDdOAKL and SNAE");
}

TEST(Hint, IsNoneForAMessageOfAnotherRule) {
    for (auto const& rule : allRules())
        for (std::string_view const message : {"", "x", "syntax error: '", "No type info for path"})
            EXPECT_EQ(hintFor(Device(), rule.id, Kelda::MfiException{"A", message, 1}).find('?'),
                      std::string::npos)
                << rule.name << ": " << message;
}

TEST(NearestKeyword, IsFoundWithoutRegardToCase) {
    EXPECT_EQ(nearestKeyword("MOUNTGROUPS:x"), "MountGroup:");
    EXPECT_EQ(nearestKeyword("activemount"), "activeMount");
    EXPECT_EQ(nearestKeyword(""), "");
    EXPECT_EQ(nearestKeyword(":"), "");
    EXPECT_EQ(nearestKeyword(std::string(2000, 'a')), "");
    EXPECT_EQ(nearestKeyword(std::string(2000, 'a') + ":"), "");
}

// All of thousands of wrong paths are near to thousands of declared ones. To compare all with all
// would take too long, and nobody reads so many hints.
TEST(Hint, IsLookedForInTheFirstOfManyWrongPathsOnly) {
    support::Device files;
    std::string declared;
    std::string mounted = "agentName:A\n";
    for (int i = 10000; i < 13000; ++i) {
        declared += "card/slot" + std::to_string(i) + "/state,T\n";
        mounted += "card/slat" + std::to_string(i) + "/state,T,r\n";
    }
    files.preinit("P", declared).profile("A", mounted);
    auto const hints = hintsFor(files, RuleId::pathWithoutType);
    ASSERT_EQ(hints.size(), 3000U);
    EXPECT_EQ(hints.front(), "did you mean 'card/slot10000/state'?");
    EXPECT_EQ(hints[500], "did you mean 'card/slot10500/state'?");
    EXPECT_EQ(hints.back(), "");
}

} // namespace
