// Files in which a single thing was broken: the fault is found where it is.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/CleanEnvironment.h"
#include "support/Corpus.h"
#include "support/LenientParser.h"
#include "support/Thrown.h"

namespace {

struct BrokenCase {
    std::string directory;
    bool isPreinit;
    std::string agent;
    std::string file;
    int line;
};

class BrokenCorpus : public testing::Test {
  protected:
    void SetUp() override { SKIP_WITHOUT_CORPUS(); }

    static std::vector<BrokenCase> cases() {
        std::vector<BrokenCase> rows;
        for (auto const& line :
             support::significantLines(support::corpusDir("broken") / "INDEX.csv")) {
            auto const fields = support::fieldsOf(line);
            if (fields.at(0) != "case") // the line of titles
                rows.push_back({fields.at(0), fields.at(1) == "preinit", fields.at(2), fields.at(3),
                                std::stoi(fields.at(5))});
        }
        return rows;
    }
    std::string preinitDir(BrokenCase const& row) const {
        return support::corpusDir("broken") / (row.isPreinit ? row.directory : "base/preinit");
    }
    // A case of preinit files has no profiles, and no agent.
    std::string profileDir(BrokenCase const& row) const {
        return row.isPreinit ? noProfiles.string()
                             : (support::corpusDir("broken") / row.directory).string();
    }
    void addAgent(Kelda::AgentMountFileInfo& parser, BrokenCase const& row) const {
        if (!row.agent.empty())
            parser.addAgent(row.agent, "");
    }

    support::CleanEnvironment environment;
    support::TemporaryDirectory noProfiles;
};

TEST_F(BrokenCorpus, HasTheCasesOfItsDescription) {
    auto const rows = cases();
    EXPECT_EQ(std::count_if(rows.begin(), rows.end(), [](auto& row) { return row.isPreinit; }), 16);
    EXPECT_EQ(std::count_if(rows.begin(), rows.end(), [](auto& row) { return !row.isPreinit; }),
              42);
}

TEST_F(BrokenCorpus, EveryFaultIsRecordedAtItsFileAndLine) {
    for (auto const& row : cases()) {
        support::LenientAgent parser(preinitDir(row), profileDir(row));
        addAgent(parser, row);
        parser.doInit();
        bool found = false;
        for (auto const& fault : parser.exceptions())
            found = found || (fault.file == row.file && fault.line == row.line);
        EXPECT_TRUE(found) << row.directory
                           << "\nrecorded: " << testing::PrintToString(support::messages(parser));
    }
}

TEST_F(BrokenCorpus, TheStrictSideThrowsItAsTheFirstFault) {
    for (auto const& row : cases()) {
        Kelda::AgentMountFileInfo parser(false, preinitDir(row), profileDir(row), true,
                                         "DefaultMountGroup");
        addAgent(parser, row);
        EXPECT_THAT(support::thrownText([&] { parser.doInit(); }),
                    testing::StartsWith(support::faultIn(row.file, row.line, "")))
            << row.directory;
        EXPECT_EQ(parser.exceptions().size(), 1U) << row.directory;
    }
}

TEST_F(BrokenCorpus, TheDeclarationsThatAllCasesNeedAreFreeOfFaults) {
    Kelda::AgentMountFileInfo parser(false,
                                     (support::corpusDir("broken") / "base/preinit").string(),
                                     noProfiles.string(), true, "DefaultMountGroup");
    EXPECT_EQ(support::thrownText([&] { parser.doInit(); }), support::nothingThrown);
    EXPECT_FALSE(parser.preinitPaths().empty());
}

} // namespace
