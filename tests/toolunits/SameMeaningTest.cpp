// The proof that a layout means the same: what it lets pass, what it does not, and that every
// layout of every text stands up to it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include "formatting/FileFormatting.h"
#include "formatting/Layout.h"
#include "formatting/SameMeaning.h"
#include "formatting/SourceLines.h"
#include "support/CleanEnvironment.h"
#include "support/Corpus.h"
#include "support/DatabaseRandom.h"
#include "support/ExampleDevice.h"
#include "support/FileContent.h"
#include "support/RandomFiles.h"

namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;
using KeldaDatabase::FileFamily;
using KeldaTool::differenceInMeaning;
using KeldaTool::formatted;

// --- texts that differ in meaning ---

struct Pair {
    char const* what;
    std::string before;
    std::string after;
    char const* difference; // empty for none
};

class EveryPairOfProfiles : public testing::TestWithParam<Pair> {};

TEST_P(EveryPairOfProfiles, DiffersInWhatTheParserMakesOfIt) {
    auto const& [what, before, after, difference] = GetParam();
    EXPECT_EQ(differenceInMeaning(before, after, FileFamily::profile).value_or(""), difference)
        << what;
}

INSTANTIATE_TEST_SUITE_P(Same, EveryPairOfProfiles,
                         testing::Values(Pair{"nothing", "", "", ""},
                                         Pair{"blank lines", "\n\na,T,r\n", "a,T,r", ""},
                                         Pair{"comments", "a,T,r # x\n", "# y\na,T,r", ""},
                                         Pair{"blanks", "a,T,r\n", " a, T,\tr\r\n", ""},
                                         Pair{"case of keywords", "agentname:A\nALIAS:%a=b\n",
                                              "agentName:A\nalias:%a=b\n", ""},
                                         Pair{"NUL characters", "a\0b\n"s, "a\0b\n\n"s, ""},
                                         Pair{"blanks before a condition", "  CONDITION : a \n",
                                              "Condition: a \n", ""}));

INSTANTIATE_TEST_SUITE_P(
    Different, EveryPairOfProfiles,
    testing::Values(
        Pair{"a path", "a,T,r\n", "b,T,r\n", "before: line: a,T,r, after: line: b,T,r"},
        Pair{"case of a path", "a,T,r\n", "A,T,r\n", "before: line: a,T,r, after: line: A,T,r"},
        Pair{"a line less", "a,T,r\nb,T,r", "a,T,r\n", "before: line: b,T,r, after: nothing more"},
        Pair{"a line more", "a,T,r\n", "a,T,r\nb,T,r", "before: nothing more, after: line: b,T,r"},
        Pair{"the order of lines", "a,T,r\nb,T,r\n", "b,T,r\na,T,r\n",
             "before: line: a,T,r, after: line: b,T,r"},
        Pair{"where a NUL character stands", "a\0b\n"s, "\0ab\n"s,
             "before: line: a, after: nothing more"},
        Pair{"a backslash that has become the end of a file", "a,T,r\\\n", "a,T,r\\",
             "before: line: a,T,r\\, after: fault: syntax error: additional characters after \\: "
             "a,T,r\\"},
        Pair{"a name that comes to light", " # x\nagentName:A\n", "# x\nagentName:A\n",
             "before: agent name: none, after: agent name: A"},
        Pair{"a name that goes", "# x\nagentName:A\n", " # x\nagentName:A\n",
             "before: agent name: A, after: agent name: none"},
        Pair{"a comment in a name", "agentName:A #b\n", "agentName:A\n",
             "before: agent name: A#b, after: agent name: A"},
        Pair{"a word that is looked for", "agentName:A\nmatch ActiveName\n",
             "agentName:A\nmatchActiveName\n",
             "before: matchActiveName is found ahead: false, after: matchActiveName is found "
             "ahead: true"},
        Pair{"blanks of a condition", "agentName:A\nCondition: a\n", "agentName:A\nCondition:a\n",
             "before: condition: a\n, after: condition:a\n"},
        Pair{"blanks behind a condition", "agentName:A\nConditionBlocker:a \n",
             "agentName:A\nConditionBlocker:a\n",
             "before: condition blocker:a \n, after: condition blocker:a\n"}));

class EveryPairOfPreinits : public testing::TestWithParam<Pair> {};

TEST_P(EveryPairOfPreinits, DiffersInWhatTheParserMakesOfIt) {
    auto const& [what, before, after, difference] = GetParam();
    EXPECT_EQ(differenceInMeaning(before, after, FileFamily::preinit).value_or(""), difference)
        << what;
}

INSTANTIATE_TEST_SUITE_P(
    Lines, EveryPairOfPreinits,
    testing::Values(Pair{"case of words", "config:a,T\nb,T,CREATEONMOUNT\n",
                         "CONFIG:a,T\nb,T,createOnMount\n", ""},
                    Pair{"a comment line that is continued", "# x\\\n", "# x \\\n",
                         "before: fault: syntax error: multi-line comment: # x\\\n, after: fault: "
                         "syntax error: multi-line comment: # x \\\n"},
                    Pair{"a type", "a,T\n", "a,U\n", "before: line: a,T, after: line: a,U"}));

// Each reading by itself would let something pass.
TEST(SameMeaning, SeesPiecesThatMoveBetweenLines) {
    auto const before = std::string(1023, ' ') + "a,T,r\n";
    auto const after = std::string(1022, ' ') + "a,T,r\n";
    EXPECT_EQ(differenceInMeaning(before, after, FileFamily::preinit),
              "before: line: a,T,r, after: line: a");
}

TEST(ProvenLayout, TellsWhatALayoutWouldChange) {
    auto const loses = [](std::string_view text, FileFamily /*family*/) {
        return KeldaTool::Formatted{std::string(text.substr(0, text.find('\n') + 1)), {}};
    };
    auto const changed = KeldaTool::provenLayout("a,T\nb,T\n", FileFamily::preinit, loses);
    EXPECT_EQ(changed.difference, "before: line: b,T, after: nothing more");
    auto const same = KeldaTool::provenLayout("a,T\n", FileFamily::preinit, loses);
    EXPECT_EQ(same.difference, std::nullopt);
}

// --- every layout means the same ---

// The comments of a text as people see them, without the blanks behind them.
std::vector<std::string> commentsOf(std::string_view text) {
    std::vector<std::string> comments;
    while (!text.empty()) {
        auto const line = text.substr(0, text.find('\n'));
        if (auto const at = line.find('#'); at != std::string_view::npos)
            comments.emplace_back(KeldaTool::withoutBlanksAround(line.substr(at)));
        text.remove_prefix(std::min(line.size() + 1, text.size()));
    }
    return comments;
}

std::string lowerCase(std::string text) {
    std::ranges::transform(text, text.begin(),
                           [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

void expectGoodLayout(std::string const& text, FileFamily family) {
    auto const layout = formatted(text, family).text;
    EXPECT_EQ(formatted(layout, family).text, layout) << text;
    EXPECT_EQ(differenceInMeaning(text, layout, family), std::nullopt) << text;
    EXPECT_EQ(commentsOf(layout), commentsOf(text)) << text;
    EXPECT_EQ(lowerCase(KeldaTool::withoutBlanks(layout)),
              lowerCase(KeldaTool::withoutBlanks(text)))
        << text;
}

void expectGoodLayouts(fs::path const& device) {
    for (auto const* const folder : {"preinit", "profiles"}) {
        if (!fs::is_directory(device / folder))
            continue;
        auto const family = folder == "preinit"s ? FileFamily::preinit : FileFamily::profile;
        for (auto const& entry : fs::directory_iterator(device / folder))
            expectGoodLayout(support::contentOf(entry.path()), family);
    }
}

TEST(EveryLayout, OfTheExampleDeviceMeansTheSame) {
    expectGoodLayouts(support::exampleDevice());
}

TEST(EveryLayout, OfTheCorporaMeansTheSame) {
    SKIP_WITHOUT_CORPUS();
    expectGoodLayouts(support::corpusDir("openconfig"));
    std::size_t files = 0;
    for (auto const& entry : fs::recursive_directory_iterator(support::corpusDir("broken"))) {
        if (!entry.is_regular_file())
            continue;
        ++files;
        for (auto const family : {FileFamily::preinit, FileFamily::profile})
            expectGoodLayout(support::contentOf(entry.path()), family);
    }
    EXPECT_GT(files, 50U);
}

// How many random texts: KELDA_FMT_TEXTS tells otherwise.
std::size_t randomTexts() {
    char const* const wanted = std::getenv("KELDA_FMT_TEXTS");
    return wanted == nullptr ? 10000 : std::strtoul(wanted, nullptr, 10);
}

TEST(EveryLayout, OfRandomDevicesMeansTheSame) {
    support::CleanEnvironment const environment;
    for (std::size_t seed = 0; seed < randomTexts() / 20; ++seed) {
        expectGoodLayouts(support::RandomDatabase(seed, 8).device().directory().path());
        expectGoodLayouts(support::RandomDevice(seed, 8).device().directory().path());
        if (testing::Test::HasFailure())
            FAIL() << "seed " << seed;
    }
}

class RandomText {
  public:
    explicit RandomText(std::uint64_t seed) : dice_(seed) {}

    // Everything that means something to the parser, in any order.
    std::string words() {
        std::string text = dice_.oneIn(3) ? start() : "";
        for (auto i = dice_.below(40); i > 0; --i)
            text += word();
        return text;
    }
    std::string bytes() {
        std::string text;
        for (auto i = dice_.below(200); i > 0; --i)
            text += dice_.oneIn(8) ? dice_.oneOf({"\n", "\\\n", "#", ",", "\r\n", " "})
                                   : std::string(1, static_cast<char>(dice_.below(256)));
        return text;
    }

  private:
    std::string start() {
        return dice_.oneOf({"agentName: A", " AGENTNAME:A-%x\n", "# x\nagentName:A\n", " # x\n",
                            "\xef\xbb\xbf", "agentName:A\\\n", "agentName:A#x\n", "\n \n"});
    }
    std::string word() {
        switch (dice_.below(14)) {
        case 0:
            return dice_.oneOf(
                {"agentName:", "agentname :", "alias:", "ALIAS: ", "MountGroup:", "include:",
                 "Condition:", "CONDITION : ", "ConditionBlocker:", "rootflags:",
                 "connectionFlags:", "subAgent:", "CONFIG:", "config:"});
        case 1:
            return dice_.oneOf({"activeMount\n", "matchActiveName\n", "match ActiveName\n",
                                "MATCHACTIVENAME", "match", "ActiveName", "noDefaultmountGroup\n",
                                "createonmount\n", "CREATEONSTANDBY\n", "createOnMount"});
        case 2:
            return dice_.oneOf({"a,T,r\n", "a/b , T , rw # x\n", "longer/path,T,createOnMount\n",
                                "alias:%a=%b?c:d\n", "Condition: a  b\n", "condition:a b # x\n"});
        case 3:
            return dice_.oneOf({"\\\n", "\\\n", "\\\n\n", "\\\r\n", "\\ \n", "\\"});
        case 4:
            return dice_.oneOf({"# x", "# x\n", "#", " # x\n", "#\n", "# x\\\n", "# x \r\n"});
        case 5:
            return dice_.oneOf(
                {" ", "  ", "\t", "\v", "\f", "\r", " \n", "\n\n\n", "\xef\xbb\xbf"});
        case 6:
            return long_();
        case 7:
        case 8:
            return dice_.oneOf({"\n", "\n", "\n", "\r\n"});
        case 9:
            return dice_.oneOf({",", ",", "=", "~", "?", ":", "%", "/"});
        default:
            return dice_.oneOf({"a", "b/c", ",T", ",T,r", "%x", "\xc3\xa4", "\xff", "x y", "\xa0"});
        }
    }
    std::string long_() {
        if (dice_.oneIn(4))
            return std::string(1, '\0');
        if (!dice_.oneIn(3))
            return std::string(78 + dice_.below(5), 'p');
        return std::string(1000 + dice_.below(40), dice_.oneOf({"x", " ", "#"})[0]);
    }

    support::Dice dice_;
};

TEST(EveryLayout, OfRandomWordsMeansTheSame) {
    for (std::uint64_t seed = 0; seed < randomTexts(); ++seed) {
        auto const text = RandomText(seed).words();
        expectGoodLayout(text, seed % 3 == 0 ? FileFamily::preinit : FileFamily::profile);
        if (testing::Test::HasFailure())
            FAIL() << "seed " << seed;
    }
}

TEST(EveryLayout, OfRandomBytesMeansTheSame) {
    for (std::uint64_t seed = 0; seed < randomTexts() / 4; ++seed) {
        auto const text = RandomText(seed).bytes();
        expectGoodLayout(text, seed % 2 == 0 ? FileFamily::preinit : FileFamily::profile);
        if (testing::Test::HasFailure())
            FAIL() << "seed " << seed;
    }
}

} // namespace
