// Completion scripts of a command line that has everything which those of kelda may come to have.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <CLI/CLI.hpp>
#include <completion/BashCompletion.h>
#include <completion/ZshCompletion.h>

#include "BashOffers.h"

namespace {

using support::Words;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class CompletionGenerator : public testing::Test {
  protected:
    CompletionGenerator() {
        program_.set_help_flag("-h,--help", "It's [odd]: $HOME `id` \\ %d");
        auto& check = *program_.add_subcommand("check", "Check: all");
        check.add_option("FILES", texts_)->type_name("FILE");
        check.add_option("-o,--output", text_, "Where\nto write")->type_name("FILE");
        check.add_option("--agents", texts_)->type_name("NAME");
        check.add_option("--secret", text_)->group("");
        auto& group = *check.add_option_group("one of");
        auto* const folder = group.add_option("--folder", text_)->type_name("DIR");
        auto* const kind = group.add_option("--kind", text_)->type_name("x|y-z");
        folder->excludes(kind);
        auto& remote = *program_.add_subcommand("remote", "Remote");
        auto& add = *remote.add_subcommand("add-one", "Add one");
        add.add_option("NAME", text_)->required();
        add.add_option("KIND", text_)->type_name("git|svn");
        remote.add_subcommand("drop", "Drop")->add_flag("--force", flag_);
        program_.add_subcommand("hidden", "Hidden")->group("");
    }
    Words offered(Words const& words) const {
        return support::offeredByBash(bashCompletion(), words);
    }
    std::string bashCompletion() const {
        return KeldaTool::bashCompletion(KeldaTool::completionModel(program_));
    }
    std::string zshCompletion() const {
        return KeldaTool::zshCompletion(KeldaTool::completionModel(program_));
    }

  private:
    CLI::App program_{"", "kelda"};
    std::string text_;
    std::vector<std::string> texts_;
    bool flag_ = false;
};

TEST_F(CompletionGenerator, MakesScriptsThatTheShellsCanRead) {
    EXPECT_EQ(support::runScript("bash -n", bashCompletion()).out, "");
    SKIP_WITHOUT("zsh");
    EXPECT_EQ(support::runScript("zsh -n", zshCompletion()).out, "");
}

TEST_F(CompletionGenerator, KnowsCommandsOfCommands) {
    EXPECT_THAT(offered({"remote", ""}), ElementsAre("add-one", "drop"));
    EXPECT_THAT(offered({"remote", "drop", "--"}), ElementsAre("--help", "--force"));
    EXPECT_THAT(zshCompletion(), HasSubstr("'add-one') _kelda_remote_add-one && result=0 ;;"));
    EXPECT_THAT(zshCompletion(), HasSubstr("\n_kelda_remote_drop() {\n"));
}

TEST_F(CompletionGenerator, LeavesOutWhatIsHidden) {
    EXPECT_THAT(offered({""}), ElementsAre("check", "remote"));
    EXPECT_THAT(offered({"check", "--s"}), IsEmpty());
    EXPECT_THAT(zshCompletion(), Not(HasSubstr("hidden")));
    EXPECT_THAT(zshCompletion(), Not(HasSubstr("--secret")));
}

TEST_F(CompletionGenerator, KnowsTheOptionsOfGroups) {
    EXPECT_THAT(offered({"check", "-"}),
                ElementsAre("-h", "--help", "-o", "--output", "--agents", "--folder", "--kind"));
    EXPECT_THAT(zshCompletion(), HasSubstr("'(--kind --folder)--folder=[]:DIR:_files -/'"));
    EXPECT_THAT(zshCompletion(), HasSubstr("'(--folder --kind)--kind=[]:x|y-z:(x y-z)'"));
}

TEST_F(CompletionGenerator, OffersARepeatableOptionAgain) {
    EXPECT_THAT(offered({"check", "--agents", "A", "--a"}), ElementsAre("--agents"));
    EXPECT_THAT(zshCompletion(), HasSubstr("'*--agents=[]:NAME: '"));
}

TEST_F(CompletionGenerator, OffersFilesWhereFilesAreWanted) {
    EXPECT_THAT(offered({"check", ""}), ElementsAre("compopt -o default"));
    EXPECT_THAT(offered({"check", "one", "two", ""}), ElementsAre("compopt -o default"));
    EXPECT_THAT(offered({"check", "-o", ""}), ElementsAre("compopt -o default"));
    EXPECT_THAT(zshCompletion(), HasSubstr("'(-o --output)-o+[Where to write]:FILE:_files'"));
    EXPECT_THAT(zshCompletion(), HasSubstr("'*:FILES:_files'"));
}

TEST_F(CompletionGenerator, TellsArgumentsByTheirPlaces) {
    EXPECT_THAT(offered({"remote", "add-one", "n", ""}), ElementsAre("git", "svn"));
    EXPECT_THAT(zshCompletion(), HasSubstr("'1:NAME: ' \\\n        '2::KIND:(git svn)'"));
}

TEST_F(CompletionGenerator, QuotesWhatDescriptionsHold) {
    EXPECT_THAT(zshCompletion(), HasSubstr("[It'\\''s \\[odd\\]\\: $HOME `id` \\\\ %d]'"));
    EXPECT_THAT(zshCompletion(), HasSubstr("'check:Check: all'"));
}

} // namespace
