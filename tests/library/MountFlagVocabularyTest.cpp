// Which letters a flag text may hold, where, and together with which others.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "support/FaultLists.h"
#include "support/Faults.h"
#include "support/LenientParser.h"
#include "support/TraceRecorder.h"

namespace {

using support::LenientParser;
using support::TraceRecorder;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr bool onPath = false;
constexpr bool onConnection = true;

constexpr std::string_view pathLetters = "wrcifSDdOAKLSNAE";
constexpr std::string_view internalLetters = "tpCney";
constexpr std::string_view connectionLetters = "SNAE";

std::string const cAndD = "c and D flags cannot be used simultaneously on mount path";
std::string const dNeedsC = "d flag must be used with c flag on same mount path";

std::string const internalFlag = "Encountered internal mount flag ";

std::string unknown(char letter) {
    return std::string("Encountered unknown mount flag ") + letter;
}
std::string invalid(char letter) {
    return std::string("Encountered invalid connection flag ") + letter;
}

// The verdict on a flag text and what was reported about it.
struct Verdict {
    bool valid;
    std::vector<std::string> messages;
};

Verdict verdictOn(std::string_view flags, bool isConnectionFlags = onPath) {
    LenientParser const parser;
    bool const valid = parser.validFlags(flags, isConnectionFlags);
    return {valid, support::messages(parser)};
}

void expectValid(std::string_view flags, bool isConnectionFlags) {
    auto const verdict = verdictOn(flags, isConnectionFlags);
    EXPECT_TRUE(verdict.valid) << flags;
    EXPECT_THAT(verdict.messages, IsEmpty()) << flags;
}

TEST(MountFlagVocabulary, TheEmptyTextIsValid) {
    expectValid("", onPath);
    expectValid("", onConnection);
}

TEST(MountFlagVocabulary, EveryLetterOfAPathLineIsValid) {
    for (char const letter : pathLetters)
        if (letter != 'd')
            expectValid(std::string(1, letter), onPath);
    for (auto const* flags : {"rw", "wrcifSdOAKL", "wrifSDOAKLNE", "cd", "dc", "rr", "SNAE"})
        expectValid(flags, onPath);
}

TEST(MountFlagVocabulary, EveryLetterOfAConnectionLineIsValid) {
    for (char const letter : connectionLetters)
        expectValid(std::string(1, letter), onConnection);
    expectValid("SNAE", onConnection);
    expectValid("EANSS", onConnection);
}

TEST(MountFlagVocabulary, InternalLettersAreValidEverywhereAndTraced) {
    for (bool const mode : {onPath, onConnection})
        for (char const letter : internalLetters) {
            std::string const flags = std::string("S") + letter;
            LenientParser const parser;
            TraceRecorder const trace;
            EXPECT_TRUE(parser.validFlags(flags, mode)) << flags;
            EXPECT_THAT(trace.at(1), ElementsAre(internalFlag + letter)) << flags;
            EXPECT_THAT(support::messages(parser), IsEmpty()) << flags;
        }
}

TEST(MountFlagVocabulary, RwtIsValidAndTracesItsInternalLetter) {
    LenientParser const parser;
    TraceRecorder const trace;
    EXPECT_TRUE(parser.validFlags("rwt", onPath));
    EXPECT_THAT(trace.lines(),
                ElementsAre(support::TraceLine{7, "( flags : rwt, isConnectionFlags : false )"},
                            support::TraceLine{1, "Encountered internal mount flag t"}));
}

TEST(MountFlagVocabulary, ACheckTracesItsArguments) {
    LenientParser const parser;
    TraceRecorder const trace;
    parser.validFlags("SN", onConnection);
    parser.validFlags("", onPath);
    EXPECT_THAT(trace.at(7), ElementsAre("( flags : SN, isConnectionFlags : true )",
                                         "( flags : , isConnectionFlags : false )"));
}

TEST(MountFlagVocabulary, EveryUnknownLetterOfAPathIsReported) {
    struct {
        char const* flags;
        std::vector<std::string> messages;
    } const rows[] = {
        {"x", {unknown('x')}},
        {"xz", {unknown('x'), unknown('z')}},
        {"rxwz", {unknown('x'), unknown('z')}},
        {"xx", {unknown('x'), unknown('x')}},
        {"r,w", {unknown(',')}},
        {"r w", {unknown(' ')}},
        {"R", {unknown('R')}},
        {"rt-", {unknown('-')}},
        {"%s", {unknown('%'), unknown('s')}},
    };
    for (auto const& row : rows) {
        auto const verdict = verdictOn(row.flags);
        EXPECT_FALSE(verdict.valid) << row.flags;
        EXPECT_EQ(verdict.messages, row.messages) << row.flags;
    }
}

TEST(MountFlagVocabulary, EveryOtherLetterOfAConnectionIsReported) {
    struct {
        char const* flags;
        std::vector<std::string> messages;
    } const rows[] = {
        {"w", {invalid('w')}},   {"SwN", {invalid('w')}}, {"rw", {invalid('r'), invalid('w')}},
        {"x", {invalid('x')}},   {"c", {invalid('c')}},   {"ww", {invalid('w'), invalid('w')}},
        {"Srt", {invalid('r')}},
    };
    for (auto const& row : rows) {
        auto const verdict = verdictOn(row.flags, onConnection);
        EXPECT_FALSE(verdict.valid) << row.flags;
        EXPECT_EQ(verdict.messages, row.messages) << row.flags;
    }
}

TEST(MountFlagVocabulary, LettersThatDependOnEachOtherAreNoConnectionLettersEither) {
    for (std::string const flags : {"cD", "dD", "cd"}) {
        auto const verdict = verdictOn(flags, onConnection);
        EXPECT_FALSE(verdict.valid) << flags;
        ASSERT_GE(verdict.messages.size(), 2U) << flags;
        EXPECT_EQ(verdict.messages[0], invalid(flags[0]));
        EXPECT_EQ(verdict.messages[1], invalid(flags[1]));
    }
}

TEST(MountFlagVocabulary, LettersThatExcludeOrNeedEachOther) {
    struct {
        char const* flags;
        std::vector<std::string> messages;
    } const rows[] = {
        {"cD", {cAndD}},
        {"Dc", {cAndD}},
        {"cDd", {cAndD}},
        {"rDwcS", {cAndD}},
        {"d", {dNeedsC}},
        {"dD", {dNeedsC}},
        {"Cd", {dNeedsC}},
        {"rwd", {dNeedsC}},
        {"xcD", {unknown('x'), cAndD}},
        {"cxD", {unknown('x'), cAndD}},
        {"dxz", {unknown('x'), unknown('z'), dNeedsC}},
    };
    for (auto const& row : rows) {
        auto const verdict = verdictOn(row.flags);
        EXPECT_FALSE(verdict.valid) << row.flags;
        EXPECT_EQ(verdict.messages, row.messages) << row.flags;
    }
}

TEST(MountFlagVocabulary, ABadLetterMakesATextInvalidEvenWhereTheOtherRulesHold) {
    EXPECT_FALSE(verdictOn("cdx").valid);
    EXPECT_THAT(verdictOn("cdx").messages, ElementsAre(unknown('x')));
}

TEST(MountFlagVocabulary, EveryReportIsTracedAsAFaultThatWasPassedOver) {
    LenientParser parser;
    parser.openFile("Fan", 4);
    TraceRecorder const trace;
    parser.validFlags("xd", onPath);
    EXPECT_THAT(support::faultList(parser),
                ElementsAre("Fan:4: " + unknown('x'), "Fan:4: " + dNeedsC));
    EXPECT_THAT(trace.at(0), ElementsAre(support::continued("Fan", 4, unknown('x')),
                                         support::continued("Fan", 4, dNeedsC)));
}

TEST(MountFlagVocabulary, EveryBadLetterOfAPathLineIsNamedBeforeThePathIsRefused) {
    LenientParser parser;
    parser.declare({"a"});
    parser.loadProfile("a,T,xrz\na,T,r,w\n");
    EXPECT_THAT(support::faultList(parser),
                ElementsAre("Profile:1: " + unknown('x'), "Profile:1: " + unknown('z'),
                            "Profile:1: Invalid flags xrz in path a", "Profile:2: " + unknown(','),
                            "Profile:2: Invalid flags r,w in path a"));
}

RC_GTEST_PROP(MountFlagVocabulary, ReportsAreAllBadLettersInOrderAndAtMostOneMore,
              (std::string const& flags)) {
    auto const isKnown = [](char letter) {
        return pathLetters.find(letter) != std::string_view::npos ||
               internalLetters.find(letter) != std::string_view::npos;
    };
    auto const verdict = verdictOn(flags);
    auto messages = verdict.messages;
    if (!messages.empty() && (messages.back() == cAndD || messages.back() == dNeedsC))
        messages.pop_back();
    std::vector<std::string> expected;
    for (char const letter : flags)
        if (!isKnown(letter))
            expected.push_back(unknown(letter));
    RC_ASSERT(messages == expected);
    RC_ASSERT(verdict.valid == verdict.messages.empty());
}

RC_GTEST_PROP(MountFlagVocabulary, KnownLettersAreJudgedByTheirCompanyOnly, ()) {
    auto const flags = *rc::gen::container<std::string>(
        rc::gen::elementOf(std::string(pathLetters) + std::string(internalLetters)));
    auto const has = [&flags](char letter) { return flags.find(letter) != std::string::npos; };
    bool const expected = !(has('c') && has('D')) && (has('c') || !has('d'));
    RC_ASSERT(verdictOn(flags).valid == expected);
}

} // namespace
