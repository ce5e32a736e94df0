// What zsh offers behind "kelda".
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "ProgramHelp.h"
#include "Shell.h"

namespace {

using support::completionScript;
using support::Words;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

TEST(ZshCompletion, IsAFileOfZshsOwnKind) {
    EXPECT_THAT(completionScript("zsh"), StartsWith("#compdef kelda\n"));
}

// The part of the script that is a command's own.
std::string functionOf(std::string const& command) {
    auto const script = completionScript("zsh");
    auto const begin = script.find("\n_kelda" + (command.empty() ? "" : "_" + command) + "() {");
    return script.substr(begin, script.find("\n}\n", begin) - begin);
}

TEST(ZshCompletion, KnowsEveryCommand) {
    for (auto const& command : support::helpCommands()) {
        EXPECT_THAT(functionOf(""), HasSubstr("\n            '" + command + ":")) << command;
        EXPECT_THAT(functionOf(""), HasSubstr("'" + command + "') _kelda_" + command + " "));
    }
}

std::string actionOf(std::string const& type) {
    if (type == "DIR")
        return "_files -/";
    if (type == "FILE")
        return "_files";
    if (type.find('|') == std::string::npos)
        return " ";
    auto words = type;
    std::replace(words.begin(), words.end(), '|', ' ');
    return "(" + words + ")";
}

TEST(ZshCompletion, KnowsEveryOptionOfEveryCommandAndItsValue) {
    auto commands = support::helpCommands();
    commands.emplace_back();
    for (auto const& command : commands)
        for (auto const& [name, type, owner] : support::helpOptions(command)) {
            auto const joint = type.empty() ? "[" : name.starts_with("--") ? "=[" : "+[";
            auto const value = type.empty() ? "]'" : "]:" + type + ":" + actionOf(type) + "'";
            auto const function = functionOf(owner);
            // Behind what it rules out, which is nothing for some that may be repeated.
            auto const begin =
                std::min(function.find(")" + name + joint), function.find("'*" + name + joint));
            ASSERT_NE(begin, std::string::npos) << owner << ' ' << name;
            auto const line = function.substr(begin, function.find('\n', begin) - begin);
            EXPECT_THAT(line, HasSubstr(value));
        }
}

TEST(ZshCompletion, RulesOutWhatExcludesOneAnother) {
    auto const mounts = functionOf("mounts");
    EXPECT_THAT(mounts, HasSubstr("'(--file --group --path)--path="));
    EXPECT_THAT(mounts, HasSubstr("'(--path --group --file)--file="));
    EXPECT_THAT(mounts, HasSubstr("'(--path --file --group)--group="));
    EXPECT_THAT(mounts, HasSubstr("'(-h --help)-h["));
}

TEST(ZshCompletion, QuotesWhatDescriptionsHold) {
    EXPECT_THAT(functionOf(""), HasSubstr("complete kelda'\\''s words.'"));
    EXPECT_THAT(functionOf("mounts"), HasSubstr("[How to print\\: for people or as JSON]"));
}

// A zsh that somebody types into, which finds the script in a folder of $fpath.
class InteractiveZsh : public testing::Test {
  protected:
    void SetUp() override { SKIP_WITHOUT("zsh"); }

    support::InteractiveShell& zsh() {
        if (!zsh_) {
            home_.write("functions/_kelda", completionScript("zsh"));
            home_.write(".zshrc", "fpath=($HOME/functions $fpath)\n" + settings);
            start();
        }
        return *zsh_;
    }
    // The same, but the script is sourced.
    support::InteractiveShell& sourcingZsh() {
        home_.write(".zshrc", settings + "source <(kelda completion zsh)\n");
        start();
        return *zsh_;
    }

  private:
    std::string const settings = "autoload -Uz compinit && compinit -u -D\n"
                                 "PS1='READY> '\n"
                                 "unsetopt prompt_sp\n"
                                 "unset zle_bracketed_paste\n"
                                 "LISTMAX=10000\n"
                                 "zstyle ':completion:*' format 'IT IS %d'\n"
                                 "show() { print -rn -- $'\\n'\"LINE<$BUFFER>LINE\"$'\\n' >$TTY }\n"
                                 "zle -N show\n"
                                 "bindkey '^T' show\n";
    void start() {
        home_.makeDirectory("one folder");
        home_.makeDirectory("other");
        home_.write("one file", "");
        zsh_ = std::make_unique<support::InteractiveShell>(Words{"zsh", "-d", "-i"}, home_.path());
    }
    support::TemporaryDirectory const home_;
    std::unique_ptr<support::InteractiveShell> zsh_;
};

TEST_F(InteractiveZsh, CompletesCommandsOptionsAndValues) {
    EXPECT_EQ(zsh().lineAfter("kelda mou\t"), "kelda mounts ");
    EXPECT_EQ(zsh().lineAfter("kelda mounts A --forma\t"), "kelda mounts A --format=");
    EXPECT_EQ(zsh().lineAfter("kelda mounts A --format j\t"), "kelda mounts A --format json ");
    EXPECT_EQ(zsh().lineAfter("kelda mounts A --format=j\t"), "kelda mounts A --format=json ");
    EXPECT_EQ(zsh().lineAfter("kelda completion z\t"), "kelda completion zsh ");
}

TEST_F(InteractiveZsh, CompletesWhenTheScriptIsSourced) {
    EXPECT_EQ(sourcingZsh().lineAfter("kelda mou\t"), "kelda mounts ");
    EXPECT_EQ(zsh().lineAfter("kelda mounts A --forma\t"), "kelda mounts A --format=");
}

TEST_F(InteractiveZsh, ShowsCommandsWithTheirDescriptions) {
    zsh().screenAfter("kelda \t", {"mounts", "-- Show what the mount profiles give one agent.",
                                   "completion", "makes a shell complete kelda's words."});
}

TEST_F(InteractiveZsh, ShowsOptionsWithTheirDescriptions) {
    zsh().screenAfter("kelda mounts A --\t",
                      {"--format", "-- How to print: for people or as JSON", "--override",
                       "-- What %agentString stands for in the profiles (default: AGENT)",
                       "--with-includes", "-- With --file: also the mounts of the files"});
}

TEST_F(InteractiveZsh, TellsWhatIsWantedWhereItHasNothingToOffer) {
    zsh().screenAfter("kelda mounts \t", {"IT IS AGENT"});
    zsh().screenAfter("kelda mounts A --group \t", {"IT IS GROUP"});
}

TEST_F(InteractiveZsh, OffersNoOptionThatIsRuledOut) {
    auto const screen = zsh().screenAfter("kelda mounts A --group g --\t", {"--format"});
    EXPECT_THAT(screen, Not(HasSubstr("--path")));
    EXPECT_THAT(screen, Not(HasSubstr("--file  ")));
}

TEST_F(InteractiveZsh, CompletesFoldersAndQuotesThem) {
    EXPECT_EQ(zsh().lineAfter("kelda config --preinit one\t"),
              "kelda config --preinit one\\ folder/");
    EXPECT_EQ(zsh().lineAfter("kelda config --preinit=oth\t"), "kelda config --preinit=other/");
}

} // namespace
