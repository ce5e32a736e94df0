// Where the parser found something, in the lines and columns of an editor.
#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "database/findings/SourceText.h"
#include "support/CleanEnvironment.h"
#include "support/Device.h"

namespace {

using namespace std::string_literals;
using KeldaDatabase::EditorLines;
using KeldaDatabase::SourceText;
using KeldaDatabase::Spot;

// --- the parser's lines and the editor's ---

// Hears of the paths "l17/x" of one file, each of which names the editor line that it stands in.
struct PathLines : Kelda::LoadObserver {
    explicit PathLines(std::string file) : wanted(std::move(file)) {}

    void preinitLine(Kelda::PreinitLine const& line, Kelda::Places places) override {
        note(line.path.view(), places);
    }
    void mountLine(Kelda::MountLine const& line, Kelda::Places places) override {
        note(line.writtenPath, places);
    }
    void note(std::string_view path, Kelda::Places places) {
        if (places.back().file != wanted || !path.starts_with('l') || !path.ends_with("/x"))
            return;
        named.push_back(std::stoi(std::string(path.substr(1))));
        parserLines.push_back(places.back().line);
    }

    std::string wanted;
    std::vector<std::int32_t> named;
    std::vector<std::int32_t> parserLines;
};

// A file that grows by lines which name themselves, and by others.
class SelfNamingText {
  public:
    explicit SelfNamingText(std::string fields) : fields_(std::move(fields)) {}

    std::string const& text() const { return text_; }
    std::vector<std::int32_t> const& named() const { return named_; }

    // A path that names the line that the text ends in.
    std::string self() {
        named_.push_back(static_cast<std::int32_t>(std::ranges::count(text_, '\n')) + 1);
        return "l" + std::to_string(named_.back()) + "/x";
    }
    void add(std::string_view text) { text_ += text; }
    void addSelf(std::string_view end = "") {
        add(self());
        add(fields_);
        add(end);
    }

    // One of several kinds of lines, of about this size where a size matters.
    static constexpr std::size_t kindCount = 12;
    void addLines(std::size_t kind, std::size_t size) {
        constexpr std::array<void (SelfNamingText::*)(std::size_t), kindCount> kinds = {
            &SelfNamingText::path,           &SelfNamingText::pathWithWindowsLineEnd,
            &SelfNamingText::continuedPath,  &SelfNamingText::longLine,
            &SelfNamingText::pathInTail,     &SelfNamingText::longContinuation,
            &SelfNamingText::pathInLeftover, &SelfNamingText::comment,
            &SelfNamingText::joinedComment,  &SelfNamingText::nuls,
            &SelfNamingText::backslashes,    &SelfNamingText::blankLines};
        (this->*kinds[kind])(size);
    }

  private:
    void path(std::size_t) { addSelf("\n"); }
    void pathWithWindowsLineEnd(std::size_t) {
        add("  ");
        addSelf(" \r\n");
    }
    void continuedPath(std::size_t size) {
        add(self());
        for (std::size_t i = size % 4; i > 0; --i)
            add("\\\n");
        add(" \\\n" + fields_ + "\n");
    }
    void longLine(std::size_t size) { add(std::string(size, 'j') + "\n"); }
    // A line in pieces, of which the last one is a path.
    void pathInTail(std::size_t size) {
        add(std::string(buffer * (1 + size % 3), 'j'));
        addSelf("\n");
    }
    // A line that just fits, or does not, with what continues it.
    void longContinuation(std::size_t size) {
        add("j" + std::string(size % buffer, 'j') + "\\\n" + std::string(size * 7 % 1500, 'k') +
            "\n");
    }
    // What a continuation has no room for is a path.
    void pathInLeftover(std::size_t size) {
        auto const before = 1 + size % (buffer - 2);
        add(std::string(before, 'j') + "\\\n" + std::string(buffer - before, 'k'));
        addSelf("\n");
    }
    void comment(std::size_t size) { add("#" + std::string(size % 1000, '-') + "\\\n"); }
    // To the parser the path belongs to the comment.
    void joinedComment(std::size_t) { add(" # note \\\nl0/y" + fields_ + "\n"); }
    void nuls(std::size_t size) {
        add("\0\n\0\\\nj\0j\n"s);
        addSelf("\0\\\n"s);
        add(std::string(size % 1200, '\0') + "\n");
    }
    void backslashes(std::size_t) { add("j\\\r\nj \\ j\nj\\\\\n"); }
    void blankLines(std::size_t) { add("\n \t\n\r\n\\\n\n"); }

    static constexpr std::size_t buffer = 1023;
    std::string fields_;
    std::string text_;
    std::vector<std::int32_t> named_;
};

using Kinds = std::vector<std::tuple<std::size_t, std::size_t>>;

// Adds lines, and perhaps a last one without an end.
void addSomeLines(SelfNamingText& text) {
    auto const size = rc::gen::oneOf(rc::gen::inRange<std::size_t>(0, 40),
                                     rc::gen::inRange<std::size_t>(1010, 1030),
                                     rc::gen::inRange<std::size_t>(0, 4000));
    auto const kinds = *rc::gen::container<Kinds>(
        rc::gen::tuple(rc::gen::inRange<std::size_t>(0, SelfNamingText::kindCount), size));
    for (auto const& [kind, about] : kinds)
        text.addLines(kind, about);
    text.add(*rc::gen::element("", "j", "j\\", "j\\\n", "\\\n\\\n"));
}

// Loads the device with the file in it, and compares what was heard with what its lines say.
void expectTrueLines(support::Device const& device, std::string const& file,
                     SelfNamingText const& text) {
    PathLines heard(file);
    auto const parser = device.lenient();
    parser->loadObserverIs(&heard);
    parser->doInit();
    SourceText const source(text.text());
    std::vector<std::int32_t> lines;
    for (auto const line : heard.parserLines)
        lines.push_back(source.editorLine(line));
    RC_ASSERT(heard.named == text.named());
    RC_ASSERT(lines == text.named());
}

RC_GTEST_PROP(SourceTextProperty, PreinitLinesAreWhereAnEditorShowsThem, ()) {
    support::CleanEnvironment const environment;
    SelfNamingText text(",T");
    addSomeLines(text);
    expectTrueLines(support::Device().preinit("P", text.text()), "P", text);
}

RC_GTEST_PROP(SourceTextProperty, PathLinesOfAProfileAreWhereAnEditorShowsThem, ()) {
    support::CleanEnvironment const environment;
    SelfNamingText text(",T,r");
    text.add(*rc::gen::element(""s, "\n \n"s, "# note \\\n"s, "# note\r\n\r\n"s, "\0\n"s));
    text.add(*rc::gen::element("agentName: A\n", " agentname : A\r\n", "AGENTNAME:A\\\n"));
    addSomeLines(text);
    expectTrueLines(support::Device().profile("P", text.text()), "P", text);
}

RC_GTEST_PROP(SourceTextProperty, PathLinesOfAnIncludedFileAreWhereAnEditorShowsThem, ()) {
    support::CleanEnvironment const environment;
    SelfNamingText text(",T,r");
    addSomeLines(text);
    expectTrueLines(support::Device()
                        .profile("P", "agentName: A\nInclude: shared\n")
                        .profile("shared", text.text()),
                    "shared", text);
}

// --- lines ---

TEST(SourceText, AnEditorShowsLinesWithoutTheirEnds) {
    SourceText const text("a\r\n\nlast\0"s);
    EXPECT_EQ(text.lines(), 3);
    EXPECT_EQ(text.line(1), "a");
    EXPECT_EQ(text.line(2), "");
    EXPECT_EQ(text.line(3), "last\0"s);
    EXPECT_EQ(text.line(4), "");
    EXPECT_EQ(text.line(0), "");
    EXPECT_EQ(SourceText("").lines(), 0);
}

TEST(SourceText, AFileThatCannotBeReadHasNoLines) {
    support::TemporaryDirectory const directory;
    EXPECT_EQ(SourceText::ofFile((directory / "none").string()).lines(), 0);
    EXPECT_EQ(SourceText::ofFile(directory.string()).lines(), 0);
}

TEST(SourceText, ALineThatTheFileDoesNotHaveKeepsItsNumber) {
    SourceText const text("a\nb\n");
    for (int const line : {-1, 0, 3, 1000}) {
        EXPECT_EQ(text.editorLine(line), line);
        EXPECT_EQ(text.linesTakenWith(line), (EditorLines{line, line}));
        EXPECT_FALSE(text.isTakenInPieces(line));
        EXPECT_EQ(text.columnOf(line, {}), 1);
    }
    EXPECT_EQ(text.spotOf(-1, {}), (Spot{1, 1, 1}));
    EXPECT_EQ(text.spotOf(3, {}), (Spot{3, 1, 1}));
}

TEST(SourceText, EveryByteStandsInALineOfTheEditorAndInOneOfTheParser) {
    SourceText const text(std::string(1030, 'x') + "\ny\n");
    auto const linesOf = [&text](std::size_t byte) {
        return std::pair(text.lineOfByte(byte), text.parserLineOfByte(byte));
    };
    EXPECT_EQ(linesOf(0), std::pair(1, 1));
    EXPECT_EQ(linesOf(1022), std::pair(1, 1));
    EXPECT_EQ(linesOf(1023), std::pair(1, 2));
    EXPECT_EQ(linesOf(1030), std::pair(1, 2));
    EXPECT_EQ(linesOf(1031), std::pair(2, 3));
    EXPECT_EQ(linesOf(5000), std::pair(2, 3));
}

struct Taken {
    std::string text;
    std::vector<EditorLines> lines; // of each line
};

TEST(SourceText, LinesAreTakenTogetherThatTheParserJoinsOrCuts) {
    std::string const full(1023, 'x');
    std::string const nearlyFull(1020, 'x');
    for (auto const& [text, lines] : std::vector<Taken>{
             {"a\nb\n", {{1, 1}, {2, 2}}},
             {"a\\\nb\\\nc\nd\n", {{1, 3}, {1, 3}, {1, 3}, {4, 4}}},
             {"# a\\\nb\n", {{1, 1}, {2, 2}}},
             {" # a\\\nb\n", {{1, 2}, {1, 2}}},
             {"\\\n# a\\\nb\n", {{1, 2}, {1, 2}, {3, 3}}},
             {"a\\ \nb\n", {{1, 1}, {2, 2}}},
             {full + "tail\\\nb\nc\n", {{1, 2}, {1, 2}, {3, 3}}},
             {nearlyFull + "\\\nbcdefgh\\\ni\nj\n", {{1, 3}, {1, 3}, {1, 3}, {4, 4}}},
             {"agentName: A\\\nb\n", {{1, 1}, {2, 2}}},
             {"b\nagentName: A\\\nb\n", {{1, 1}, {2, 3}, {2, 3}}},
             {"agentName: A\0\\\nb\n"s, {{1, 1}, {2, 2}}},
             {"a\\", {{1, 1}}},
             {"a\\\n", {{1, 1}}}}) {
        SourceText const source(text);
        ASSERT_EQ(source.lines(), static_cast<int>(lines.size())) << text;
        for (int line = 1; line <= source.lines(); ++line)
            EXPECT_EQ(source.linesTakenWith(line), lines[static_cast<std::size_t>(line - 1)])
                << text << ", line " << line;
    }
}

TEST(SourceText, ALineIsTakenInPiecesWhereSomethingStandsBehindTheCut) {
    auto const line = [](std::size_t size) { return std::string(size, 'x'); };
    for (auto const& [text, expected] :
         std::vector<std::pair<std::string, bool>>{{line(1022) + "\n", false},
                                                   {line(1023) + "\n", false},
                                                   {line(1023) + "\r\n", false},
                                                   {line(1023) + "  # note\n", false},
                                                   {line(1023) + "  # note\\\nb\n", true},
                                                   {line(1024) + "\n", true},
                                                   {line(1022) + "\\\nb\n", true},
                                                   {line(1021) + "\\\nbc\n", false},
                                                   {line(1021) + "\\\nbcd\n", true},
                                                   {line(2047), true}}) {
        EXPECT_EQ(SourceText(text).isTakenInPieces(1), expected) << text;
        EXPECT_FALSE(SourceText("y\n" + text).isTakenInPieces(1)) << text;
    }
}

TEST(SourceText, TheLineOfTheAgentNameIsTheFirstThatSaysSomething) {
    for (auto const& [text, line] :
         std::vector<std::pair<std::string, int>>{{"agentName: A\n", 1},
                                                  {"# note\n\n \r\n AGENT name : A\n", 4},
                                                  {" # note\nagentName: A\n", 0},
                                                  {"a,T,r\nagentName: A\n", 0},
                                                  {"agentName: A\0\n"s, 0},
                                                  {"agentName\n", 0},
                                                  {"", 0}})
        EXPECT_EQ(SourceText(text).agentNameLine(), line) << text;
}

TEST(SourceTexts, ReadAFileOnce) {
    support::TemporaryDirectory const directory;
    auto const file = directory.write("a", "b\n");
    KeldaDatabase::SourceTexts texts;
    auto const& text = texts.of(file);
    directory.write("a", "b\nc\n");
    EXPECT_EQ(&texts.of(file), &text);
    EXPECT_EQ(text.lines(), 1);
}

} // namespace
