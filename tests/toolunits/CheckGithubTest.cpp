// The findings of a check as workflow commands.
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "CheckResults.h"
#include "check/CheckFormats.h"
#include "check/CheckTextParts.h"

namespace {

using namespace toolunits;
using KeldaTool::checkGithub;

std::string commandOf(SourcePlace place, std::string message) {
    return checkGithub(
        resultOf({finding(RuleId::flagUnknown, std::move(place), std::move(message))}));
}

// A command as its reader takes it apart.
struct Command {
    std::string name;
    std::vector<std::pair<std::string, std::string>> values;
    std::string data;
};

std::string unescaped(std::string const& text) {
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            out += text[i];
            continue;
        }
        out += static_cast<char>(std::stoi(text.substr(i + 1, 2), nullptr, 16));
        i += 2;
    }
    return out;
}

Command readCommand(std::string const& line) {
    auto const end = line.find("::", 2);
    auto const head = line.substr(2, end - 2);
    Command command{head.substr(0, head.find(' ')), {}, unescaped(line.substr(end + 2))};
    for (auto at = command.name.size() + 1; at < head.size();) {
        auto const comma = std::min(head.find(',', at), head.size());
        auto const equals = head.find('=', at);
        command.values.emplace_back(head.substr(at, equals - at),
                                    unescaped(head.substr(equals + 1, comma - equals - 1)));
        at = comma + 1;
    }
    return command;
}

TEST(CheckGithub, IsACommandForEachFinding) {
    EXPECT_EQ(checkGithub(sampleResult()), expected("check-github.txt"));
}

TEST(CheckGithub, OfNoFindingsIsEmpty) {
    EXPECT_EQ(checkGithub(resultOf({})), "");
}

TEST(CheckGithub, NamesAPlaceAsFarAsItIsKnown) {
    EXPECT_EQ(commandOf({"f", 2, 3, 4, ""}, "m"),
              "::error file=f,line=2,col=3,endColumn=7,title=flag-unknown::m\n");
    EXPECT_EQ(commandOf({"f", 2, 3, 0, ""}, "m"),
              "::error file=f,line=2,col=3,endColumn=4,title=flag-unknown::m\n");
    EXPECT_EQ(commandOf({"f", 2, 0x7fffffff, 0x7fffffff, ""}, "m"),
              "::error file=f,line=2,col=2147483647,endColumn=4294967294,title=flag-unknown::m\n");
    EXPECT_EQ(commandOf({"f", 2, 0, 0, ""}, "m"), "::error file=f,line=2,title=flag-unknown::m\n");
    EXPECT_EQ(commandOf({"f", 0, 3, 4, ""}, "m"), "::error file=f,title=flag-unknown::m\n");
    EXPECT_EQ(commandOf({"", 2, 3, 4, ""}, "m"), "::error title=flag-unknown::m\n");
}

TEST(CheckGithub, OfAFindingWithoutFileAndRuleHasNoValues) {
    auto made = finding(RuleId::flagUnknown, {}, "m");
    made.rule = nullptr;
    EXPECT_EQ(checkGithub(resultOf({made})), "::error::m\n");
}

TEST(CheckGithub, EscapesWhatHasAMeaningInACommand) {
    EXPECT_EQ(commandOf({"a:b,c%d", 0, 0, 0, ""}, "a:b,c%d\ne\rf"),
              "::error file=a%3Ab%2Cc%25d,title=flag-unknown::a:b,c%25d%0A    e\\x0df\n");
    EXPECT_EQ(commandOf({"f::error::g\n::error::h", 0, 0, 0, ""}, "m%0A\n::error::x"),
              "::error file=f%3A%3Aerror%3A%3Ag\\x0a%3A%3Aerror%3A%3Ah,title=flag-unknown::m%250A"
              "%0A    ::error::x\n");
}

RC_GTEST_PROP(CheckGithubProperty, IsACommandForEachFindingWhateverTheFilesHold, ()) {
    auto const result = anyResult();
    auto const text = checkGithub(result);
    RC_ASSERT(isFitForATerminal(text));
    auto const lines = linesOf(text);
    RC_ASSERT(lines.size() == result.findings.size());
    for (std::size_t i = 0; i < lines.size(); ++i) {
        auto const& made = result.findings[i];
        auto const name = std::string(nameOf(made.severity));
        RC_ASSERT(lines[i].starts_with("::" + (name == "note" ? "notice" : name) + " "));
        auto const command = readCommand(lines[i]);
        if (!made.place.file.empty())
            RC_ASSERT(command.values.front() ==
                      std::pair(std::string("file"), KeldaTool::printable(made.place.file)));
        RC_ASSERT(command.values.back() ==
                  std::pair(std::string("title"), std::string(made.rule->name)));
        RC_ASSERT(command.data.starts_with(KeldaTool::indentedMessage(made.message)));
    }
}

} // namespace
