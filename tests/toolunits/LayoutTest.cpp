// The canonical layout of files, to the letter: what is laid out how, and what is left as it is.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "formatting/Layout.h"

namespace {

using namespace std::string_literals;
using KeldaDatabase::FileFamily;
using KeldaTool::formatted;
using testing::ElementsAre;
using testing::IsEmpty;

std::string profile(std::string const& text) {
    return formatted(text, FileFamily::profile).text;
}
std::string preinit(std::string const& text) {
    return formatted(text, FileFamily::preinit).text;
}
// "line: reason"
std::vector<std::string> keptOf(std::string const& text, FileFamily family) {
    std::vector<std::string> lines;
    for (auto const& kept : formatted(text, family).kept)
        lines.push_back(std::to_string(kept.line) + ": " + kept.reason);
    return lines;
}

struct Row {
    char const* what;
    std::string before;
    std::string after;
};

class EveryProfileLayout : public testing::TestWithParam<Row> {};

TEST_P(EveryProfileLayout, IsTheCanonicalOne) {
    EXPECT_EQ(profile(GetParam().before), GetParam().after) << GetParam().what;
    EXPECT_EQ(profile(GetParam().after), GetParam().after) << GetParam().what;
    EXPECT_THAT(keptOf(GetParam().before, FileFamily::profile), IsEmpty()) << GetParam().what;
}

INSTANTIATE_TEST_SUITE_P(
    Lines, EveryProfileLayout,
    testing::Values(
        Row{"nothing", "", ""}, //
        Row{"blank lines only", "\n \n\t\n", ""},
        Row{"one blank behind commas", "a/b,T,r\n", "a/b, T, r\n"},
        Row{"blanks inside of fields go", " a / b ,\tT , r w \n", "a/b, T, rw\n"},
        Row{"all kinds of blanks", "a/b\v,\fT,r\r\n", "a/b, T, r\n"},
        Row{"a slash at the end stays", "a/b/,T,r\n", "a/b/, T, r\n"},
        Row{"empty fields", ",,\n", ", ,\n"},
        Row{"more commas are part of the flags", "a,T,r , w\n", "a, T, r,w\n"},
        Row{"no line end", "a,T,r", "a, T, r\n"},
        Row{"carriage returns", "a,T,r\r\nb,T,r\r\n", "a, T, r\nb, T, r\n"},
        Row{"columns", "a,T,r\nlonger/path,Some::Type,rw\n",
            "a,           T,          r\nlonger/path, Some::Type, rw\n"},
        Row{"columns of characters, not of bytes", "\xc3\xa4\xc3\xb6,T,r\nabc,T,r\n",
            "\xc3\xa4\xc3\xb6,  T, r\nabc, T, r\n"},
        Row{"a blank line ends a block", "a,T,r\n\nlonger,T,r\n", "a, T, r\n\nlonger, T, r\n"},
        Row{"a keyword ends a block", "a,T,r\nactiveMount\nlonger,T,r\n",
            "a, T, r\nactiveMount\nlonger, T, r\n"},
        Row{"a comment does not", "a,T,r\n  # why\nlonger,T,r\n",
            "a,      T, r\n# why\nlonger, T, r\n"},
        Row{"nor does a continued line, which has no columns",
            "a,T,r\nvery/long/path,\\\nT,r\nlonger,T,r\n",
            "a,      T, r\nvery/long/path, \\\n    T, r\nlonger, T, r\n"},
        Row{"nor does a path of more than 80 characters",
            "a,T,r\n" + std::string(81, 'p') + ",T,r\nbc,T,r\n",
            "a,  T, r\n" + std::string(81, 'p') + ", T, r\nbc, T, r\n"},
        Row{"a path of 80 characters has columns", "a,T,r\n" + std::string(80, 'p') + ",T,r\n",
            "a," + std::string(80, ' ') + "T, r\n" + std::string(80, 'p') + ", T, r\n"}));

INSTANTIATE_TEST_SUITE_P(
    Comments, EveryProfileLayout,
    testing::Values(Row{"at the very left", "  # a  b \t\n", "# a  b\n"},
                    Row{"as they are", "#a,b , c=%d\n", "#a,b , c=%d\n"},
                    Row{"two blanks before them", "a,T,r# x\n", "a, T, r  # x\n"},
                    Row{"aligned in a block", "a,T,r  # x\nbc,T,rw # y\nlonger,T,r\n",
                        "a,      T, r   # x\nbc,     T, rw  # y\nlonger, T, r\n"},
                    Row{"behind keywords", "activeMount# x\n\tMountGroup:g#y\n",
                        "activeMount  # x\nMountGroup: g  #y\n"},
                    Row{"behind what is no known line", "foo  bar # x\n", "foo  bar  # x\n"},
                    Row{"a second # is part of it", "a,T,r # x  # y\n", "a, T, r  # x  # y\n"},
                    Row{"one of more than 300 characters is not aligned",
                        "a,T,r #" + std::string(300, 'x') + "\nbc,T,rwc # y\n",
                        "a, T, r  #" + std::string(300, 'x') + "\nbc, T, rwc  # y\n"}));

INSTANTIATE_TEST_SUITE_P(
    Keywords, EveryProfileLayout,
    testing::Values(
        Row{"the agent's name", "\n AGENTNAME :  A - %x \n", "agentName: A-%x\n"},
        Row{"an empty name", "agentname:\n", "agentName:\n"},
        Row{"words alone", "ACTIVEMOUNT\nnodefaultMountGroup\nMATCHACTIVENAME\nactive Mount\n",
            "activeMount\nnoDefaultMountGroup\nmatchActiveName\nactiveMount\n"},
        Row{"an alias", "ALIAS : %A=b c\n", "alias: %A = bc\n"},
        Row{"a list", "alias:%a=%b,c\n", "alias: %a = %b, c\n"},
        Row{"a list is no choice", "alias:%a=%b,c?d:e~f\n", "alias: %a = %b, c?d:e~f\n"},
        Row{"a test", "alias:%a=%b~c~d\n", "alias: %a = %b ~ c~d\n"},
        Row{"a choice", "alias:%a=%b?c:d:e?f\n", "alias: %a = %b ? c : d:e?f\n"},
        Row{"a choice of nothing", "alias:%a=%b?:\n", "alias: %a = %b ?  :\n"},
        Row{"a colon that stands first", "alias:%a=c:d?e\n", "alias: %a = c:d?e\n"},
        Row{"an alias without a value", "alias:%a=\n", "alias: %a =\n"},
        Row{"an alias without = is no alias", "ALIAS:%a  b\n", "ALIAS:%a  b\n"},
        Row{"a group", "mountgroup:fast,5\n", "MountGroup: fast, 5\n"},
        Row{"a group without priority", "MOUNTGROUP:Fast\n", "MountGroup: Fast\n"},
        Row{"an include", "INCLUDE:Shared.*\n", "Include: Shared.*\n"},
        Row{"a sub-agent", "subagent: A - %cellId\n", "subAgent: A-%cellId\n"},
        Row{"flags", "ROOTFLAGS:r w\nconnectionflags:SN\nrootFlags:\n",
            "rootFlags: rw\nconnectionFlags: SN\nrootFlags:\n"},
        Row{"a path line that begins like a keyword", "MOUNTGROUP: a, b, c\n",
            "MOUNTGROUP:a, b, c\n"},
        Row{"a name that is a path line to those who include the file", "AGENTNAME: a,b , c\n",
            "AGENTNAME: a,b,c\n"},
        Row{"a second name is no known line", "agentName: A\nAGENTNAME:  B C\n",
            "agentName: A\nAGENTNAME:  B C\n"},
        Row{"what is no known line keeps its blanks inside", "  foo \t bar\n", "foo \t bar\n"}));

INSTANTIATE_TEST_SUITE_P(
    Conditions, EveryProfileLayout,
    testing::Values(
        Row{"what stands behind the colon stays", "  CONDITION :  a  b \t\n",
            "Condition:  a  b \t\n"},
        Row{"a carriage return, too", "conditionblocker:a\r\n", "ConditionBlocker:a\r\n"},
        Row{"the blanks before a comment, too", "condition:a   # x \n", "Condition:a   # x\n"},
        Row{"a line end is made behind a comment", "condition:a # x", "Condition:a # x\n"},
        Row{"parts of a continued one", "condition: a \\\n\t b  \nfoo\n",
            "Condition: a \\\n\t b  \nfoo\n"},
        Row{"with two commas it is a path line", "Condition: a, b, c\n", "Condition:a, b, c\n"}));

INSTANTIATE_TEST_SUITE_P(
    ContinuedLines, EveryProfileLayout,
    testing::Values(
        Row{"four blanks in front", "a,\\\n  T,\\\n\tr\n", "a, \\\n    T, \\\n    r\n"},
        Row{"inside of fields", " a / \\\n b , T\\\n, r\n", "a/\\\n    b, T\\\n    , r\n"},
        Row{"the last line is blank", "a,T,r\\\n \n", "a, T, r\\\n\n"},
        Row{"a line between is blank", "a,T,\\\n  \\\nr\n", "a, T, \\\n    \\\n    r\n"},
        Row{"a comment behind the last line", "a,T,\\\nr # x \n", "a, T, \\\n    r  # x\n"},
        Row{"a comment alone in the last line", "a,T,r\\\n# x\n", "a, T, r\\\n    # x\n"},
        Row{"more commas are part of the flags", "a,T,\\\nr , w\n", "a, T, \\\n    r,w\n"},
        Row{"keywords", "ALIAS:%a\\\n = b  c\n", "alias: %a\\\n    = b  c\n"},
        Row{"a broken keyword", "Mount \\\n Group: a\n", "Mount \\\n    Group: a\n"},
        Row{"no known line", "foo  bar\\\n baz\n", "foo  bar\\\n    baz\n"}));

INSTANTIATE_TEST_SUITE_P(BlankLines, EveryProfileLayout,
                         testing::Values(Row{"none at the beginning", "\n\r\n# x\n", "# x\n"},
                                         Row{"none at the end", "# x\n\n \n", "# x\n"},
                                         Row{"one of several", "# x\n\n\t\n\n# y\n",
                                             "# x\n\n# y\n"},
                                         Row{"one stays one", "# x\n \n# y\n", "# x\n\n# y\n"},
                                         Row{"none is made", "a,T,r\nMountGroup: g\nb,T,r\n",
                                             "a, T, r\nMountGroup: g\nb, T, r\n"}));

class EveryPreinitLayout : public testing::TestWithParam<Row> {};

TEST_P(EveryPreinitLayout, IsTheCanonicalOne) {
    EXPECT_EQ(preinit(GetParam().before), GetParam().after) << GetParam().what;
    EXPECT_EQ(preinit(GetParam().after), GetParam().after) << GetParam().what;
    EXPECT_THAT(keptOf(GetParam().before, FileFamily::preinit), IsEmpty()) << GetParam().what;
}

INSTANTIATE_TEST_SUITE_P(
    Lines, EveryPreinitLayout,
    testing::Values(
        Row{"a path and a type", " a / b,T \n", "a/b, T\n"},
        Row{"an attribute", "a,T,CREATEONMOUNT\nb,T,createonStandby\n",
            "a, T, createOnMount\nb, T, createOnStandby\n"},
        Row{"another attribute", "a,T,CREATEONMOUNTS\n", "a, T, CREATEONMOUNTS\n"},
        Row{"an empty attribute", "a,T, \nbc,Type,x\n", "a,  T,\nbc, Type, x\n"},
        Row{"a third comma", "a,T,b , c\n", "a, T, b,c\n"},
        Row{"a config path", "config:a,T\nCONFIG : b/c,T\n", "CONFIG: a,   T\nCONFIG: b/c, T\n"},
        Row{"a config path without comma is no known line", "config: a\n", "config: a\n"},
        Row{"types without an attribute make no column",
            "a,Long::Type\nbc,T,createOnMount\nd,Ty,createOnMount\n",
            "a,  Long::Type\nbc, T,  createOnMount\nd,  Ty, createOnMount\n"},
        Row{"comments of all lines stand below each other", "a,T # x\nbc,T,createOnMount # y\n",
            "a,  T                 # x\nbc, T, createOnMount  # y\n"},
        Row{"words of profiles mean nothing", "  ALIAS:%a=b\n", "ALIAS:%a=b\n"},
        Row{"a continued attribute", "a,T,\\\nCREATEONMOUNT\n", "a, T, \\\n    createOnMount\n"},
        Row{"an attribute that goes on", "a,T,CREATEONMOUNT\\\nS\n",
            "a, T, CREATEONMOUNT\\\n    S\n"},
        Row{"a continued config path", "config: \\\na,T\n", "CONFIG:\\\n    a, T\n"},
        Row{"a broken keyword", "con\\\nfig:a,T\n", "con\\\n    fig:a, T\n"},
        Row{"equals signs", "a=b,c,createOnMount\n", "a=b, c, createOnMount\n"}));

struct Kept {
    char const* what;
    std::string line; // the second of three
    char const* reason;
};

class EveryKeptLine : public testing::TestWithParam<Kept> {};

TEST_P(EveryKeptLine, IsLeftByteForByteAndTold) {
    auto const text = "agentName:A\n" + GetParam().line + "b,T,r\n";
    auto const wanted = "agentName: A\n" + GetParam().line + "b, T, r\n";
    EXPECT_EQ(profile(text), wanted) << GetParam().what;
    EXPECT_THAT(keptOf(text, FileFamily::profile),
                ElementsAre(std::string("2: ") + GetParam().reason))
        << GetParam().what;
}

std::string const thousand(1000, 'x');

INSTANTIATE_TEST_SUITE_P(
    Lines, EveryKeptLine,
    testing::Values(
        Kept{"a longer line", "a ,T,r #" + std::string(1016, 'x') + "\n",
             "the line is longer than 1023 characters"},
        Kept{"a longer comment", "  # " + std::string(1020, 'x') + "\n",
             "the line is longer than 1023 characters"},
        Kept{"a line that would be longer", thousand + std::string(19, 'y') + ",T,r\r\n",
             "the line is longer than 1023 characters"},
        Kept{"a line that would become longer", thousand + std::string(17, 'y') + ",T,r\n",
             "the line would be longer than 1023 characters"},
        Kept{"a joined line that would be longer",
             "a,T,\\\n" + thousand + std::string(16, 'y') + "\n",
             "the line would be longer than 1023 characters"},
        Kept{"a joined line that is longer", "a ,T,\\\n" + thousand + std::string(30, 'y') + "\n",
             "the line is longer than 1023 characters"},
        Kept{"a NUL character", std::string("a ,T,r\0x\n", 9), "the line holds a NUL character"},
        Kept{"a NUL character in a comment", std::string("# \0x \n", 6),
             "the line holds a NUL character"},
        Kept{"a NUL character in a joined line", std::string("a ,T,\\\nr\0 x\n", 12),
             "the line holds a NUL character"},
        Kept{"a backslash inside", "a\\b , T,r\n", "a backslash does not end the line"},
        Kept{"a blank behind a backslash", "a ,T,r\\ \n", "a backslash does not end the line"},
        Kept{"a carriage return behind it", "a ,T,r\\\r\n", "a backslash does not end the line"},
        Kept{"a backslash in a comment", "a ,T,r # x\\y\n", "a backslash does not end the line"},
        Kept{"a continued comment", "# x \\\n", "a comment line may not hold a backslash"},
        Kept{"a backslash in a comment line", "#  x\\y \n",
             "a comment line may not hold a backslash"},
        Kept{"a comment that goes on", "a ,T,r # x\\\n y\n",
             "a comment stands in a continued line"},
        Kept{"an indented comment that goes on", "  # x\\\n y\n",
             "a comment stands in a continued line"},
        Kept{"nothing that goes on", " \\\n \n", "the line is continued, and nothing stands in it"},
        Kept{"a word that is looked for with its blanks", "match ActiveName\n",
             "'matchActiveName' is looked for with its blanks"},
        Kept{"the same in a path", "match ActiveName/a,T,r\n",
             "'matchActiveName' is looked for with its blanks"},
        Kept{"the same in a continued line", "a ,\\\n MATCH activenames,r\n",
             "'matchActiveName' is looked for with its blanks"},
        Kept{"a byte order mark", "\xef\xbb\xbflonger ,T,r\n",
             "the line begins with a byte order mark"},
        Kept{"blanks before a byte order mark", "\v\xef\xbb\xbf# x \n",
             "the line begins with a byte order mark"},
        Kept{"a broken keyword before a condition", "Condi\\\n tion: a\n",
             "the blanks of a condition are a part of it"}));

struct KeptFile {
    char const* what;
    std::string text;
    std::string after;
    std::vector<std::string> kept;
};

class EveryKeptFile : public testing::TestWithParam<KeptFile> {};

TEST_P(EveryKeptFile, KeepsWhatItIs) {
    EXPECT_EQ(profile(GetParam().text), GetParam().after) << GetParam().what;
    EXPECT_EQ(keptOf(GetParam().text, FileFamily::profile), GetParam().kept) << GetParam().what;
}

constexpr char const* hidden = "without the blanks before the comment the file would be a profile";
constexpr char const* inName = "a comment behind the agent's name is a part of it";
constexpr char const* continuedName = "the line of the agent's name is not continued";

std::vector<std::string> at(int line, char const* reason) {
    return {std::to_string(line) + ": " + reason};
}

INSTANTIATE_TEST_SUITE_P(
    Files, EveryKeptFile,
    testing::Values(
        KeptFile{"a backslash ends the file", "a,T,r\nb ,T,r\\\n", "a, T, r\nb ,T,r\\\n",
                 at(2, "a backslash ends the file")},
        KeptFile{"a backslash without line end", "b ,T,r\\", "b ,T,r\\",
                 at(1, "a backslash does not end the line")},
        KeptFile{"no line end behind what is kept", "b\\c ,T,r", "b\\c ,T,r",
                 at(1, "a backslash does not end the line")},
        KeptFile{"no line end behind a condition", "condition:a", "condition:a",
                 at(1, "a line end would become a part of the condition")},
        KeptFile{"nor behind a continued one", "condition:a\\\n b", "condition:a\\\n b",
                 at(1, "a line end would become a part of the condition")},
        KeptFile{"a byte order mark", "\xef\xbb\xbf# x \na,T,r\n", "\xef\xbb\xbf# x \na, T, r\n",
                 at(1, "the line begins with a byte order mark")},
        KeptFile{"a byte order mark below blank lines", "\n\n\xef\xbb\xbflonger,T,r\na,T,r\n",
                 "\xef\xbb\xbflonger,T,r\na, T, r\n",
                 at(3, "the line begins with a byte order mark")},
        KeptFile{"an indented comment hides nothing",
                 " # x \n#y \na,T,r\nagentName:A\n",
                 "# x\n#y\na, T, r\nagentName:A\n",
                 {}},
        KeptFile{"a comment in the name", " agentName : A # x \na,T,r\n",
                 " agentName : A # x \na, T, r\n", at(1, inName)},
        KeptFile{"a name that looks continued", "agentname:A\\\n a,T,r\\\n\nb,T,r\n",
                 "agentname:A\\\n a,T,r\\\n\nb, T, r\n", at(1, continuedName)},
        KeptFile{
            "a name that looks continued further than it is",
            "agentname:" + thousand + "\\\n" + std::string(13, 'b') + "#c\\\n d ,T,r\ne ,T,r\n",
            "agentname:" + thousand + "\\\n" + std::string(13, 'b') + "#c\\\n d ,T,r\ne, T, r\n",
            at(1, continuedName)},
        KeptFile{"a comment hides a name that stands in the middle of a comment",
                 " # x \n#" + std::string(1022, 'x') + "agentname: A\na ,T,r\n",
                 " # x \n#" + std::string(1022, 'x') + "agentname: A\na, T, r\n",
                 {"1: "s + hidden, "2: the line is longer than 1023 characters"}},
        KeptFile{"the name stands in the middle of a comment",
                 "#" + std::string(1022, 'x') + "agentname: A\na,T,r\n",
                 "#" + std::string(1022, 'x') + "agentname: A\na, T, r\n",
                 at(1, "the line is longer than 1023 characters")},
        KeptFile{"a name with a NUL character is none", std::string("agentname:A\0\na,T,r\n", 19),
                 std::string("agentname:A\0\na, T, r\n", 21),
                 at(1, "the line holds a NUL character")}));

TEST(Layout, KeepsAnIndentedCommentThatHidesTheAgentsName) {
    std::string const text = " # x \n#y \n\tAGENTNAME : A\na,T,r\n";
    EXPECT_EQ(profile(text), " # x \n#y\nAGENTNAME : A\na, T, r\n");
    EXPECT_THAT(keptOf(text, FileFamily::profile), ElementsAre(std::string("1: ") + hidden));
}

TEST(Layout, SeesThatALongBlankLineHidesNothing) {
    auto const text = std::string(2000, ' ') + "\n # x\nagentName:A\n";
    EXPECT_EQ(profile(text), text);
    EXPECT_THAT(
        keptOf(text, FileFamily::profile),
        ElementsAre("1: the line is longer than 1023 characters", std::string("2: ") + hidden));
}

TEST(Layout, SeesThatALineWithANulHidesNothing) {
    std::string const text(" # x\n\0y\nagentName:A\n", 20);
    EXPECT_EQ(profile(text), text);
}

TEST(Layout, TellsLinesAsAnEditorCounts) {
    std::string const text = "\n\na,T,\\\nr\n# x\\\n" + std::string(3000, 'x') + "\nb\\c\n";
    EXPECT_THAT(keptOf(text, FileFamily::profile),
                ElementsAre("5: a comment line may not hold a backslash",
                            "6: the line is longer than 1023 characters",
                            "7: a backslash does not end the line"));
}

TEST(Layout, LeavesALineOf1022CharactersToTheLetter) {
    std::string const text = "foo " + std::string(1018, 'x') + "\n";
    EXPECT_EQ(profile(text), text);
    EXPECT_THAT(keptOf(text, FileFamily::profile), IsEmpty());
}

} // namespace
