// The attributes of preinit paths: their texts, which of two declarations wins, which tokens a path
// may hold, and the queries.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include <Fen/Exception.h>

#include "support/CleanEnvironment.h"
#include "support/Device.h"
#include "support/FaultLists.h"
#include "support/LenientParser.h"
#include "support/PreinitMaps.h"
#include "support/TraceRecorder.h"

namespace {

using Kelda::PreinitAttr;
using support::Attributes;
using support::nameOf;
using support::Strings;
using testing::ElementsAre;
using testing::IsEmpty;

class PreinitAttributes : public testing::Test {
  protected:
    PreinitAttributes() { parser_.initializedIs(true); }

    std::string record(char const* path, char const* text) {
        return nameOf(parser_.validateAndRecordPathAttr(path, text));
    }
    Attributes attributes() const { return support::declaredAttributes(parser_); }
    Strings messages() const { return support::messages(parser_); }

    support::CleanEnvironment environment_;
    support::LenientParser parser_;
};

// --- texts ---

struct TextRow {
    char const* text;
    char const* attribute;
};

TEST_F(PreinitAttributes, AreReadInAnyCase) {
    for (auto const& [text, attribute] : std::vector<TextRow>{
             {"createOnMount", "createOnMount"},
             {"CREATEONMOUNT", "createOnMount"},
             {"createonmount", "createOnMount"},
             {"createOnStandby", "createOnStandby"},
             {"CREATEONSTANDBY", "createOnStandby"},
             {"CreateOnSTANDBY", "createOnStandby"},
         })
        EXPECT_EQ(nameOf(parser_.preinitAttrFromString(text)), attribute) << text;
    EXPECT_THAT(messages(), IsEmpty());
}

TEST_F(PreinitAttributes, NoTextIsNoAttribute) {
    EXPECT_EQ(nameOf(parser_.preinitAttrFromString(nullptr)), "none");
    EXPECT_THAT(messages(), IsEmpty());
}

TEST_F(PreinitAttributes, AnyOtherTextIsInvalid) {
    for (char const* const text : {"", "none", "createOnMoun", "createOnMount ", " createOnMount",
                                   "createOnMount,", "create", "%s", "{}"}) {
        SCOPED_TRACE(text);
        support::LenientParser parser;
        support::TraceRecorder const trace("MountFileInfo", 1);
        EXPECT_EQ(nameOf(parser.preinitAttrFromString(text)), "invalid");
        EXPECT_THAT(support::faultList(parser),
                    ElementsAre(std::string(":-1: invalid attribute: ") + text));
        EXPECT_EQ(trace.at(0), support::continuedTraces(parser));
    }
}

TEST_F(PreinitAttributes, ArePrintedAsTheyAreWritten) {
    EXPECT_STREQ(parser_.preinitAttrToString(PreinitAttr::none), "");
    EXPECT_STREQ(parser_.preinitAttrToString(PreinitAttr::createOnMount), "createOnMount");
    EXPECT_STREQ(parser_.preinitAttrToString(PreinitAttr::createOnStandby), "createOnStandby");
    EXPECT_THAT(messages(), IsEmpty());
}

TEST_F(PreinitAttributes, AnInvalidOneHasNoText) {
    for (unsigned const value : {3U, 4U, 0xffffffffU}) {
        support::LenientParser parser;
        EXPECT_EQ(parser.preinitAttrToString(static_cast<PreinitAttr>(value)), nullptr) << value;
        EXPECT_THAT(support::messages(parser), ElementsAre("Invalid preinit path attr")) << value;
    }
}

TEST_F(PreinitAttributes, HaveFixedNumbers) {
    EXPECT_EQ(static_cast<std::uint32_t>(PreinitAttr::none), 0U);
    EXPECT_EQ(static_cast<std::uint32_t>(PreinitAttr::createOnMount), 1U);
    EXPECT_EQ(static_cast<std::uint32_t>(PreinitAttr::createOnStandby), 2U);
    EXPECT_EQ(static_cast<std::uint32_t>(PreinitAttr::invalid), 3U);
    EXPECT_EQ(sizeof(PreinitAttr), 4U);
}

// --- two declarations of one path ---

TEST_F(PreinitAttributes, TheSameOneAgainIsSilent) {
    for (char const* const text :
         {static_cast<char const*>(nullptr), "createOnMount", "createOnStandby"}) {
        char const* const path = text == nullptr ? "plain" : text;
        auto const first = record(path, text);
        EXPECT_EQ(record(path, text), first);
    }
    EXPECT_THAT(messages(), IsEmpty());
}

struct RedefinitionRow {
    char const* first;
    char const* second;
};

TEST_F(PreinitAttributes, ADifferentOneIsReportedAndTheFirstStays) {
    for (auto const& [first, second] : std::vector<RedefinitionRow>{
             {"createOnMount", "createOnStandby"},
             {"createOnStandby", "createOnMount"},
             {nullptr, "createOnMount"},
             {"createOnMount", nullptr},
             {"createOnStandby", nullptr},
         }) {
        auto const textOf = [](char const* text) { return std::string(text ? text : ""); };
        SCOPED_TRACE(textOf(first) + " then " + textOf(second));
        support::LenientParser parser;
        auto const kept = parser.validateAndRecordPathAttr("a/b", first);
        EXPECT_EQ(parser.validateAndRecordPathAttr("a/b", second), PreinitAttr::invalid);
        EXPECT_THAT(support::messages(parser),
                    ElementsAre("Redefining attribute for a/b\nOld Attribute: " + textOf(first) +
                                "\nNew Attribute: " + textOf(second)));
        EXPECT_EQ(support::declaredAttributes(parser), (Attributes{{"a/b", nameOf(kept)}}));
    }
}

TEST_F(PreinitAttributes, ARedefinitionIsTraced) {
    record("a", "createOnMount");
    support::TraceRecorder const trace("MountFileInfo", 1);
    record("a", nullptr);
    EXPECT_EQ(trace.at(0), support::continuedTraces(parser_));
}

TEST_F(PreinitAttributes, AnInvalidOneIsRecordedForAPathWithoutAny) {
    EXPECT_EQ(record("a", "bad"), "invalid");
    EXPECT_EQ(attributes(), (Attributes{{"a", "invalid"}}));
    EXPECT_EQ(record("a", "worse"), "invalid");
    EXPECT_THAT(messages(), ElementsAre("invalid attribute: bad", "invalid attribute: worse"));
}

TEST_F(PreinitAttributes, AnInvalidOneDoesNotReplaceAnother) {
    record("a", "createOnMount");
    EXPECT_EQ(record("a", "bad"), "invalid");
    EXPECT_EQ(attributes(), (Attributes{{"a", "createOnMount"}}));
    ASSERT_GE(messages().size(), 2U);
    EXPECT_EQ(messages().front(), "invalid attribute: bad");
    EXPECT_THAT(messages().back(), testing::StartsWith("Redefining attribute for a\nOld Attribute: "
                                                       "createOnMount\nNew Attribute: "));
}

TEST_F(PreinitAttributes, AnInvalidOneIsNotReplacedEither) {
    record("a", "bad");
    EXPECT_EQ(record("a", "createOnMount"), "invalid");
    EXPECT_EQ(attributes(), (Attributes{{"a", "invalid"}}));
    EXPECT_THAT(messages().back(),
                testing::StartsWith("Redefining attribute for a\nOld Attribute: "));
    EXPECT_THAT(messages().back(), testing::EndsWith("\nNew Attribute: createOnMount"));
}

TEST_F(PreinitAttributes, TheSetterReplacesWhateverThereWas) {
    parser_.pathAttrMapIs("a", PreinitAttr::createOnMount);
    parser_.pathAttrMapIs("a", PreinitAttr::none);
    EXPECT_EQ(attributes(), (Attributes{{"a", "none"}}));
    EXPECT_THAT(messages(), IsEmpty());
}

TEST_F(PreinitAttributes, ARecordingIsTraced) {
    support::TraceRecorder const trace;
    record("a", "createOnMount");
    EXPECT_TRUE(trace.has(8, "( tokenPath : a, attr : createOnMount )"));
}

// --- tokens ---

TEST_F(PreinitAttributes, CellTokensAndTheirBeginningsAreAllowedEverywhere) {
    for (char const* const path :
         {"plain", "%cellId", "a/%peerCellId/b", "%CELLID", "%PeerCellID", "%cell", "%peerCell",
          "%c", "%p", "%", "a/%/b", "%cell-x", "%%", "%cellId%peerCellId", "%cellId.%p"})
        for (char const* const text : {static_cast<char const*>(nullptr), "createOnStandby"}) {
            support::LenientParser parser;
            EXPECT_NE(parser.validateAndRecordPathAttr(path, text), PreinitAttr::invalid) << path;
            EXPECT_THAT(support::messages(parser), IsEmpty()) << path;
        }
}

TEST_F(PreinitAttributes, OtherTokensNeedCreateOnMount) {
    for (char const* const path :
         {"a/%sliceId/b", "%slot", "%cellIds", "%cellId_", "%cellId1", "%cellPath", "%peerCellPath",
          "%peercell_", "%_", "%1", "%cellId/%slot", "%x/%y", "%eerCellId", "%sysname"}) {
        SCOPED_TRACE(path);
        for (char const* const text : {static_cast<char const*>(nullptr), "createOnStandby"}) {
            support::LenientParser parser;
            EXPECT_EQ(parser.validateAndRecordPathAttr(path, text), PreinitAttr::invalid);
            EXPECT_THAT(
                support::messages(parser),
                ElementsAre(std::string("non-cell tokens in non-createOnMount path: ") + path));
        }
        support::LenientParser parser;
        EXPECT_EQ(parser.validateAndRecordPathAttr(path, "createOnMount"),
                  PreinitAttr::createOnMount);
        EXPECT_THAT(support::messages(parser), IsEmpty());
    }
}

TEST_F(PreinitAttributes, AnAttributeThatItsTokensForbidStaysRecorded) {
    record("a/%slot", nullptr);
    record("b/%slot", "createOnStandby");
    EXPECT_EQ(attributes(), (Attributes{{"a/%slot", "none"}, {"b/%slot", "createOnStandby"}}));
}

TEST_F(PreinitAttributes, AForbiddenTokenIsTraced) {
    support::TraceRecorder const trace("MountFileInfo", 1);
    record("%slot", nullptr);
    EXPECT_EQ(trace.at(0), support::continuedTraces(parser_));
    EXPECT_EQ(trace.at(0).size(), 1U);
}

// --- queries ---

class PreinitAttributeQueries : public testing::Test {
  protected:
    PreinitAttributeQueries() {
        device_.preinit("Base", "plain/b,T\nmount/%slot,T,createOnMount\n"
                                "standby/%cellPath,T,createOnStandby\n");
        parser_ = device_.lenient();
    }

    support::CleanEnvironment environment_;
    support::Device device_;
    std::unique_ptr<support::LenientParser> parser_;
};

TEST_F(PreinitAttributeQueries, TheTextOfATokenPathIsTold) {
    EXPECT_EQ(parser_->getPreinitAttr("plain/b"), "");
    EXPECT_EQ(parser_->getPreinitAttr("mount/%slot"), "createOnMount");
    EXPECT_EQ(parser_->getPreinitAttr("standby/cell/%cellId"), "createOnStandby");
    EXPECT_THAT(support::faultList(*parser_), IsEmpty());
}

TEST_F(PreinitAttributeQueries, AWildcardPathIsReported) {
    for (char const* const path : {"a/*", "*", "mount/*", "plain/b*"}) {
        auto const parser = device_.lenient();
        support::TraceRecorder const trace;
        EXPECT_EQ(parser->getPreinitAttr(path), "") << path;
        EXPECT_THAT(support::faultList(*parser),
                    ElementsAre(":-1: getPreinitAttr: attributes are indexed by plain paths, "
                                "including tokens, not wildcards"))
            << path;
        EXPECT_EQ(trace.at(0), support::continuedTraces(*parser)) << path;
        EXPECT_TRUE(trace.has(3, "Returning empty string")) << path;
    }
}

TEST_F(PreinitAttributeQueries, AnUnknownPathIsReported) {
    for (char const* const path : {"none", "plain", "PLAIN/B", "mount/%other", ""}) {
        auto const parser = device_.lenient();
        support::TraceRecorder const trace;
        EXPECT_EQ(parser->getPreinitAttr(path), "") << path;
        EXPECT_THAT(support::faultList(*parser),
                    ElementsAre(std::string(":-1: getPreinitAttr: no attr info for path ") + path));
        EXPECT_EQ(trace.at(0), support::continuedTraces(*parser)) << path;
        EXPECT_TRUE(trace.has(3, "Returning empty string")) << path;
    }
}

TEST_F(PreinitAttributeQueries, AnUnknownPathIsExplainedByThePackageThatIsSet) {
    support::EnvironmentVariable const package("Q9PKG", "fans");
    parser_->getPreinitAttr("none");
    auto const& expected =
        parser_->fmtNotFoundError("getPreinitAttr: no attr info for path none", false);
    EXPECT_THAT(support::messages(*parser_), ElementsAre(expected.view()));
    EXPECT_THAT(support::messages(*parser_).front(), testing::HasSubstr("Q9PKG"));
}

TEST_F(PreinitAttributeQueries, TheStrictFlavourThrowsForAnUnknownPath) {
    auto const parser = device_.agent("Fan");
    EXPECT_THROW(parser->getPreinitAttr("none"), Fen::AgentException);
    EXPECT_EQ(parser->getPreinitAttr("mount/%slot"), "createOnMount");
}

TEST_F(PreinitAttributeQueries, EveryTypedPathIsListedInOrder) {
    EXPECT_THAT(
        support::strings(parser_->preinitPaths()),
        ElementsAre("mount/*", "plain", "plain/b", "standby", "standby/cell", "standby/cell/*"));
}

TEST_F(PreinitAttributeQueries, EveryDeclaredTokenPathIsListed) {
    EXPECT_THAT(support::strings(parser_->rawPreinitPaths()),
                testing::UnorderedElementsAre("plain/b", "mount/%slot", "standby/cell/%cellId"));
}

TEST_F(PreinitAttributeQueries, EachLoadsOnFirstUse) {
    EXPECT_EQ(device_.lenient()->preinitPaths().size(), 6U);
    EXPECT_EQ(device_.lenient()->rawPreinitPaths().size(), 3U);
    EXPECT_EQ(device_.lenient()->getPreinitAttr("mount/%slot"), "createOnMount");
    parser_->rawPreinitPaths();
    parser_->preinitPaths();
    EXPECT_EQ(parser_->doInitCount(), 1);
}

TEST_F(PreinitAttributeQueries, UnInitialisingForgetsTheAttributes) {
    parser_->doInit();
    parser_->unDoInit();
    EXPECT_THAT(parser_->pathAttrMap(), IsEmpty());
    EXPECT_EQ(parser_->rawPreinitPaths().size(), 3U) << "the query loads again";
    EXPECT_EQ(parser_->doInitCount(), 2);
}

} // namespace
