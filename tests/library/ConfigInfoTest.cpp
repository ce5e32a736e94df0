// Which paths are config paths: declarations, conflicts between them, and the queries.
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
using support::Configs;
using testing::ElementsAre;
using testing::IsEmpty;

class ConfigInfo : public testing::Test {
  protected:
    ConfigInfo() { parser_.initializedIs(true); }

    Configs configs() { return support::declaredConfigs(parser_); }
    support::Strings messages() const { return support::messages(parser_); }

    support::CleanEnvironment environment_;
    support::LenientParser parser_;
};

TEST_F(ConfigInfo, EachKindOfPathIsRecordedAsItself) {
    EXPECT_TRUE(parser_.validateAndRecordPathConfigInfo("declared", PreinitAttr::none));
    parser_.addConfigChildPath("child");
    parser_.addNonConfigPath("other");
    EXPECT_EQ(
        configs(),
        (Configs{{"declared", {true, true}}, {"child", {true, false}}, {"other", {false, false}}}));
    EXPECT_THAT(messages(), IsEmpty());
}

TEST_F(ConfigInfo, ADeclaredPathMayBeCreatedOnStandby) {
    EXPECT_TRUE(parser_.validateAndRecordPathConfigInfo("a", PreinitAttr::createOnStandby));
    EXPECT_EQ(configs(), (Configs{{"a", {true, true}}}));
}

TEST_F(ConfigInfo, ADeclaredPathMayNotBeCreatedOnMount) {
    support::TraceRecorder const trace("MountFileInfo", 1);
    EXPECT_FALSE(parser_.validateAndRecordPathConfigInfo("a/b", PreinitAttr::createOnMount));
    EXPECT_THAT(messages(), ElementsAre("path a/b may not have both CONFIG and createOnMount. All "
                                        "config paths must be present at startup"));
    EXPECT_EQ(trace.at(0), support::continuedTraces(parser_));
    EXPECT_THAT(configs(), IsEmpty());
}

TEST_F(ConfigInfo, ATokenInADeclaredPathIsReportedAndThePathRecorded) {
    support::TraceRecorder const trace("MountFileInfo", 1);
    EXPECT_TRUE(parser_.validateAndRecordPathConfigInfo("a/%cellId", PreinitAttr::none));
    EXPECT_THAT(messages(), ElementsAre("alias found in preinit CONFIG path: a/%cellId"));
    EXPECT_EQ(trace.at(0), support::continuedTraces(parser_));
    EXPECT_EQ(configs(), (Configs{{"a/%cellId", {true, true}}}));
}

TEST_F(ConfigInfo, ATokenAndCreateOnMountAreTwoFaults) {
    EXPECT_FALSE(parser_.validateAndRecordPathConfigInfo("%a", PreinitAttr::createOnMount));
    EXPECT_THAT(messages(), ElementsAre("alias found in preinit CONFIG path: %a",
                                        "path %a may not have both CONFIG and createOnMount. All "
                                        "config paths must be present at startup"));
}

// --- two records of one path ---

struct Kind {
    bool isConfig;
    bool isExplicit;
    char const* words;
};

std::vector<Kind> const& kinds() {
    static std::vector<Kind> const all{{true, true, "config, explicit"},
                                       {true, false, "config, child"},
                                       {false, true, "non-config, explicit"},
                                       {false, false, "non-config, child"}};
    return all;
}

TEST_F(ConfigInfo, TheSameRecordAgainIsSilent) {
    for (auto const& kind : kinds()) {
        support::LenientParser parser;
        parser.addPathConfigInfo("a", kind.isConfig, kind.isExplicit);
        parser.addPathConfigInfo("a", kind.isConfig, kind.isExplicit);
        EXPECT_THAT(support::messages(parser), IsEmpty()) << kind.words;
    }
}

TEST_F(ConfigInfo, ADifferentRecordIsReportedAndTheFirstStays) {
    for (auto const& old : kinds())
        for (auto const& next : kinds()) {
            if (&old == &next)
                continue;
            support::LenientParser parser;
            parser.initializedIs(true);
            parser.addPathConfigInfo("a/b", old.isConfig, old.isExplicit);
            support::TraceRecorder const trace("MountFileInfo", 1);
            parser.addPathConfigInfo("a/b", next.isConfig, next.isExplicit);
            EXPECT_THAT(support::messages(parser),
                        ElementsAre(std::string("Attempting to overwrite ConfigInfo for path a/b. "
                                                "Old: (") +
                                    old.words + "), New: (" + next.words + ")"));
            EXPECT_EQ(trace.at(0), support::continuedTraces(parser));
            EXPECT_EQ(support::declaredConfigs(parser),
                      (Configs{{"a/b", {old.isConfig, old.isExplicit}}}));
        }
}

TEST_F(ConfigInfo, ADeclaredPathDoesNotBecomeAChild) {
    parser_.loadPreinit("CONFIG:a,T\n");
    parser_.addConfigChildPath("a");
    EXPECT_THAT(messages(), ElementsAre("Attempting to overwrite ConfigInfo for path a. Old: "
                                        "(config, explicit), New: (config, child)"));
    EXPECT_EQ(configs(), (Configs{{"a", {true, true}}}));
}

TEST_F(ConfigInfo, DeclaringAPathTwiceIsSilent) {
    parser_.loadPreinit("CONFIG:a,T\nCONFIG:a,U\n");
    EXPECT_THAT(messages(), IsEmpty());
    EXPECT_EQ(configs(), (Configs{{"a", {true, true}}}));
}

// --- traces ---

TEST_F(ConfigInfo, RecordsAreTraced) {
    support::TraceRecorder const trace;
    parser_.addConfigChildPath("child");
    EXPECT_EQ(trace.count(7, "( path : child )"), 1);
    EXPECT_EQ(trace.count(8, "( path : child, isConfig : true, isExplicit : false )"), 1);
    parser_.addNonConfigPath("other");
    EXPECT_EQ(trace.count(7, "( path : other )"), 1);
    EXPECT_EQ(trace.count(8, "( path : other, isConfig : false, isExplicit : false )"), 1);
    parser_.validateAndRecordPathConfigInfo("declared", PreinitAttr::none);
    EXPECT_EQ(trace.count(8, "( path : declared, isConfig : true, isExplicit : true )"), 1);
}

TEST_F(ConfigInfo, TheQuestionWhetherAPathIsOneIsTraced) {
    support::TraceRecorder const trace;
    parser_.pathIsConfig("a", true);
    parser_.pathIsConfig("b", false);
    EXPECT_TRUE(trace.has(7, "( path : a, includeChildren : true )"));
    EXPECT_TRUE(trace.has(7, "( path : b, includeChildren : false )"));
}

// --- queries ---

class ConfigInfoQueries : public testing::Test {
  protected:
    ConfigInfoQueries() {
        device_.preinit("Base", "CONFIG:sys/a,T\nplain,T\n");
        parser_ = device_.lenient();
    }

    support::CleanEnvironment environment_;
    support::Device device_;
    std::unique_ptr<support::LenientParser> parser_;
};

TEST_F(ConfigInfoQueries, OnlyADeclaredPathIsAConfigPathByItself) {
    parser_->addConfigChildPath("sys/a/child");
    parser_->addNonConfigPath("other");
    EXPECT_TRUE(parser_->pathIsConfig("sys/a", false));
    for (char const* const path : {"sys/a/child", "other", "plain", "sys", "none", ""})
        EXPECT_FALSE(parser_->pathIsConfig(path, false)) << path;
}

TEST_F(ConfigInfoQueries, WithChildrenAChildIsAConfigPathToo) {
    parser_->addConfigChildPath("sys/a/child");
    parser_->addNonConfigPath("other");
    for (char const* const path : {"sys/a", "sys/a/child"})
        EXPECT_TRUE(parser_->pathIsConfig(path, true)) << path;
    for (char const* const path : {"other", "plain", "sys", "none", "sys/a/child/below"})
        EXPECT_FALSE(parser_->pathIsConfig(path, true)) << path;
    EXPECT_THAT(support::faultList(*parser_), IsEmpty());
}

TEST_F(ConfigInfoQueries, TheMapTellsOfEveryPathThatHasARecord) {
    parser_->addNonConfigPath("other");
    EXPECT_TRUE(parser_->pathConfigInfoMapHas("sys/a"));
    EXPECT_TRUE(parser_->pathConfigInfoMapHas("other"));
    EXPECT_FALSE(parser_->pathConfigInfoMapHas("plain"));
    EXPECT_EQ(&parser_->pathConfigInfoMap(), &parser_->pathConfigInfoMap());
    EXPECT_EQ(parser_->pathConfigInfoMap().size(), 2U);
}

TEST_F(ConfigInfoQueries, EachLoadsOnFirstUse) {
    EXPECT_TRUE(device_.lenient()->pathIsConfig("sys/a", false));
    EXPECT_TRUE(device_.lenient()->pathConfigInfoMapHas("sys/a"));
    EXPECT_EQ(device_.lenient()->pathConfigInfoMap().size(), 1U);
    parser_->addConfigChildPath("sys/a/child");
    EXPECT_EQ(parser_->pathConfigInfoMap().size(), 2U);
    auto const other = device_.lenient();
    other->addNonConfigPath("sys/a");
    EXPECT_EQ(other->exceptions().size(), 1U) << "the declaration was loaded first";
    EXPECT_EQ(parser_->doInitCount(), 1);
}

TEST_F(ConfigInfoQueries, UnInitialisingForgetsEveryRecord) {
    parser_->addConfigChildPath("sys/a/child");
    parser_->unDoInit();
    EXPECT_EQ(parser_->pathConfigInfoMap().size(), 1U) << "loaded again";
}

TEST_F(ConfigInfoQueries, TheStrictFlavourThrowsForAConflict) {
    auto const parser = device_.agent("Fan");
    try {
        parser->addNonConfigPath("sys/a");
        FAIL() << "nothing was thrown";
    } catch (Fen::AgentException const& fault) {
        EXPECT_STREQ(fault.what(), "Attempting to overwrite ConfigInfo for path sys/a. Old: "
                                   "(config, explicit), New: (non-config, child)");
    }
    EXPECT_TRUE(parser->pathIsConfig("sys/a", false));
}

} // namespace
