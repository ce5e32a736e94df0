// What bash offers behind "kelda".
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "BashOffers.h"
#include "ProgramHelp.h"
#include "Shell.h"

namespace {

using support::completionScript;
using support::HelpOption;
using support::runScript;
using support::Words;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

Words offered(Words const& words, std::string const& settings = "") {
    return support::offeredByBash(completionScript("bash"), words, settings);
}

TEST(BashCompletion, OffersEveryCommand) {
    EXPECT_EQ(offered({""}), support::helpCommands());
}

TEST(BashCompletion, OffersTheCommandsThatBeginAlike) {
    EXPECT_THAT(offered({"mou"}), ElementsAre("mounts"));
    EXPECT_THAT(offered({"x"}), IsEmpty());
}

Words namesOf(std::vector<HelpOption> const& options) {
    Words names;
    for (auto const& option : options)
        names.push_back(option.name);
    return names;
}

TEST(BashCompletion, OffersEveryOptionOfTheProgram) {
    EXPECT_EQ(offered({"-"}), namesOf(support::helpOptions("")));
}

TEST(BashCompletion, OffersEveryOptionOfEveryCommand) {
    for (auto const& command : support::helpCommands()) {
        auto const names = namesOf(support::helpOptions(command));
        EXPECT_THAT(names, Contains("--help")) << command;
        EXPECT_EQ(offered({command, "-"}), names) << command;
    }
}

// "a|b"
std::string joined(Words const& words) {
    std::string text;
    for (auto const& word : words)
        text += (text.empty() ? "" : "|") + word;
    return text;
}

TEST(BashCompletion, OffersOfEveryValueWhatItsNameSays) {
    for (auto const& command : support::helpCommands())
        for (auto const& [name, type, owner] : support::helpOptions(command)) {
            if (type.empty())
                continue;
            auto const offers = offered({owner, name, ""});
            if (type == "DIR") {
                EXPECT_THAT(offers, ElementsAre("compopt -o dirnames")) << owner << ' ' << name;
            } else if (type == "FILE") {
                EXPECT_THAT(offers, ElementsAre("compopt -o default")) << owner << ' ' << name;
            } else if (type.find('|') == std::string::npos) {
                EXPECT_THAT(offers, IsEmpty()) << owner << ' ' << name;
            } else {
                EXPECT_EQ(joined(offers), type) << owner << ' ' << name;
            }
        }
}

struct Offer {
    Words words;
    Words offers;
};

std::ostream& operator<<(std::ostream& stream, Offer const& offer) {
    for (auto const& word : offer.words)
        stream << " '" << word << "'";
    return stream;
}

class EveryOffer : public testing::TestWithParam<Offer> {};

TEST_P(EveryOffer, IsMade) {
    EXPECT_EQ(offered(GetParam().words), GetParam().offers);
}

std::vector<Offer> const offers = {
    {{"mounts", "A", "--fo"}, {"--format"}},
    {{"mounts", "--format", "j"}, {"json"}},
    {{"mounts", "--format", "x"}, {}},
    // "--format=j"
    {{"mounts", "--format", "=", "j"}, {"json"}},
    {{"mounts", "--format", "="}, {"table", "json"}},
    {{"mounts", "--preinit", "=", "x", "--fo"}, {"--format"}},
    // where bash is told not to split at "="
    {{"mounts", "--format=j"}, {"--format=json"}},
    {{"mounts", "--format=json", "--fo"}, {}},
    {{"mounts", "--nothing=j"}, {}},
    // "FanTray::default", "FanTray::"
    {{"mounts", "A", "--group", "FanTray", "::", "default", "--fo"}, {"--format"}},
    {{"mounts", "A", "--group", "FanTray", "::", "--fo"}, {"--format"}},
    {{"mounts", "A", "--group", "FanTray", "::", "--preinit", ""}, {"compopt -o dirnames"}},
    {{"mounts", "A", "--group", "FanTray", "::"}, {}},
    {{"mounts", "A", "--group", "FanTray", "::", "d"}, {}},
    // a value may look like a command or an option
    {{"mounts", "--override", "mounts", "--fo"}, {"--format"}},
    {{"mounts", "--override", "--format", "--fo"}, {"--format"}},
    {{"mounts", "preinit", "--with"}, {"--with-includes"}},
    // arguments
    {{"completion", ""}, {"bash", "zsh"}},
    {{"completion", "z"}, {"zsh"}},
    {{"completion", "zsh", ""}, {"-h", "--help"}},
    {{"config", ""}, {"-h", "--help", "--preinit", "--format"}},
    // behind "--" there are no options
    {{"config", "--", ""}, {}},
    {{"config", "--", "--"}, {}},
    {{"completion", "--", ""}, {"bash", "zsh"}},
    // options that were given, and those that they rule out
    {{"config", "--preinit", "x", "--"}, {"--help", "--format"}},
    {{"config", "-h", "-"}, {"--preinit", "--format"}},
    {{"mounts", "A", "--group", "x", "--p"}, {"--preinit", "--profiles"}},
    // no command of the program
    {{"paint", "--he"}, {"--help"}},
};

INSTANTIATE_TEST_SUITE_P(BashCompletion, EveryOffer, testing::ValuesIn(offers));

TEST(BashCompletion, RunsNothingThatIsTyped) {
    Words const typed{"mounts", "$(echo run)", "`echo run`", "a;echo run", "*", "--fo"};
    EXPECT_THAT(offered(typed), ElementsAre("--format"));
}

TEST(BashCompletion, WorksWhateverTheShellsSettings) {
    for (std::string const settings : {"set -u\n", "set -e\n", "IFS=/\n", "shopt -s nullglob\n",
                                       "shopt -s nocasematch\n", "shopt -s extglob failglob\n"}) {
        EXPECT_THAT(offered({"mounts", "A", "--fo"}, settings), ElementsAre("--format"))
            << settings;
        EXPECT_THAT(offered({"mounts", "--format", ""}, settings), ElementsAre("table", "json"))
            << settings;
    }
}

// The package loads the script of a command when the command is first completed.
TEST(BashCompletion, IsFoundByThePackageBashCompletion) {
    constexpr char const* package = "/usr/share/bash-completion/bash_completion";
    if (!std::filesystem::exists(package))
        GTEST_SKIP() << "no " << package;
    auto const outcome = runScript("bash --norc --noprofile",
                                   std::string("mkdir -p share/completions\n"
                                               "kelda completion bash >share/completions/kelda\n"
                                               "export BASH_COMPLETION_USER_DIR=$PWD/share\n"
                                               "source ") +
                                       package + "\n_completion_loader kelda\ncomplete -p kelda\n");
    EXPECT_EQ(outcome.out, "complete -F _kelda kelda\n");
}

// Where an interactive bash starts.
struct BashHome : support::TemporaryDirectory {
    BashHome() {
        write("rc", "PS1='READY> '\n"
                    "bind 'set enable-bracketed-paste off'\n"
                    "bind 'set show-all-if-ambiguous on'\n"
                    "bind -x '\"\\C-t\": printf \"\\nLINE<%s>LINE\\n\" \"$READLINE_LINE\"'\n"
                    "source <(kelda completion bash)\n");
        makeDirectory("one folder");
        makeDirectory("other");
        makeDirectory("deep/down");
        write("one file", "");
    }
};

class InteractiveBash : public testing::Test {
  protected:
    BashHome const home_;
    support::InteractiveShell bash_{{"bash", "--noprofile", "--rcfile", "rc", "-i"}, home_.path()};
};

TEST_F(InteractiveBash, CompletesCommandsOptionsAndValues) {
    EXPECT_EQ(bash_.lineAfter("kelda mou\t"), "kelda mounts ");
    EXPECT_EQ(bash_.lineAfter("kelda mounts A --fo\t"), "kelda mounts A --format ");
    EXPECT_EQ(bash_.lineAfter("kelda mounts A --format j\t"), "kelda mounts A --format json ");
    EXPECT_EQ(bash_.lineAfter("kelda mounts A --format=j\t"), "kelda mounts A --format=json ");
}

TEST_F(InteractiveBash, ShowsWhatThereIsToChooseFrom) {
    bash_.screenAfter("kelda mounts A --\t", {"--path", "--with-includes", "--profiles"});
    bash_.screenAfter("kelda mounts A --format=\t", {"json", "table"});
}

TEST_F(InteractiveBash, CompletesFoldersAndQuotesThem) {
    EXPECT_EQ(bash_.lineAfter("kelda config --preinit one\t"),
              "kelda config --preinit one\\ folder/");
    EXPECT_THAT(bash_.lineAfter("kelda config --preinit 'one\t"),
                StartsWith("kelda config --preinit 'one folder"));
    EXPECT_EQ(bash_.lineAfter("kelda config --preinit=oth\t"), "kelda config --preinit=other/");
    EXPECT_EQ(bash_.lineAfter("kelda config --preinit ~/deep/d\t"),
              "kelda config --preinit ~/deep/down/");
}

TEST_F(InteractiveBash, CompletesNoFileWhereAnAgentIsNamed) {
    EXPECT_EQ(bash_.lineAfter("kelda mounts oth\t"), "kelda mounts oth");
}

} // namespace
