// How a page becomes a part of the program: the script that makes a C++ source of it.
#include <gtest/gtest.h>

#include <cstdlib>
#include <map>

#include "support/FileContent.h"
#include "support/TemporaryDirectory.h"

namespace {

using namespace std::string_literals;
using support::contentOf;

constexpr char const* page = "<style>{{style}}</style>\n<script>{{script}}</script>\n";

class Embedding : public testing::Test {
  protected:
    void SetUp() override {
        if (std::system("cmake --version > /dev/null 2>&1") != 0)
            GTEST_SKIP() << "no program cmake";
        folder.write("page/page.html", page);
        folder.write("page/page.css", "b{}\n");
        folder.write("page/page.js", "f();\n");
    }

    void write(std::string const& name, std::string_view text) const {
        folder.write("page/" + name, text);
    }

    // What it says; empty when all went well.
    std::string refusal() const {
        auto const command = "cmake -D FOLDER=" + (folder / "page").string() +
                             " -D OUTPUT=" + (folder / "out.cpp").string() + " -P " +
                             KELDA_SOURCE_DIR "/tools/kelda/report/EmbedPage.cmake 2> " +
                             (folder / "err").string();
        return std::system(command.c_str()) == 0 ? "" : contentOf(folder / "err");
    }

    // The texts of the literals behind a name, put together; none may be too long for a compiler.
    std::string embedded(std::string const& name) const {
        EXPECT_EQ(refusal(), "");
        auto const source = contentOf(folder / "out.cpp");
        auto at = source.find(" " + name + " = joined({") + name.size() + 12;
        std::string text;
        for (std::string const begin = "\n    R\"kelda(";
             source.compare(at, begin.size(), begin) == 0;) {
            auto const end = source.find(")kelda\"", at);
            auto const piece = source.substr(at + begin.size(), end - at - begin.size());
            EXPECT_LT(piece.size(), 16000U);
            text += piece;
            at = end + std::string(")kelda\"sv,").size();
        }
        EXPECT_EQ(source.compare(at, 8, "\n    });"), 0);
        return text;
    }

    support::TemporaryDirectory folder;
};

TEST_F(Embedding, KeepsEveryByte) {
    auto const script =
        "a = [1; 2];;\nb = \"\\n\\\\ ${x} $ENV{HOME} @x@ \\\"\";\n\n\n  [[c]] [=[d]=] )\" R\"(\n"
        "/* \u00e4\u20ac\U0001f600 \xff */ off OFF 0 NOTFOUND\n#if 0\n?\?/\n\\\n"s;
    write("page.js", script);
    write("page.css", ";\n");
    EXPECT_EQ(embedded("script"), script);
    EXPECT_EQ(embedded("style"), ";\n");
    EXPECT_EQ(embedded("page"), page);
}

TEST_F(Embedding, CutsLongTextsBetweenLines) {
    std::string script;
    for (int i = 0; script.size() < 100000; ++i)
        script += std::string(static_cast<std::size_t>(i) * 37 % 500, 'x') + "\u20ac;\n";
    write("page.js", script);
    EXPECT_EQ(embedded("script"), script);
}

TEST_F(Embedding, PutsPiecesTogetherInTheOrderOfTheirNames) {
    write("20-b.js", "b();\n");
    write("10-a.js", "a();\n");
    write("00.css", "a{}");
    EXPECT_EQ(embedded("script"), "a();\nb();\nf();\n");
    EXPECT_EQ(embedded("style"), "a{}b{}\n");
}

TEST_F(Embedding, WritesTheHashesOfTheWholeTexts) {
    write("page.css", "ab");
    write("qage.css", "c");
    EXPECT_EQ(refusal(), "");
    EXPECT_NE(contentOf(folder / "out.cpp")
                  .find("\"ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad\""),
              std::string::npos);
}

struct Refused {
    std::string file;
    std::string text;
    std::string message;
};

class EveryRefused : public Embedding, public testing::WithParamInterface<Refused> {};

TEST_P(EveryRefused, IsTold) {
    write(GetParam().file, GetParam().text);
    auto message = refusal();
    // It is folded at blanks.
    std::erase_if(message, [](char c) { return c == ' ' || c == '\n'; });
    EXPECT_NE(message.find(GetParam().message), std::string::npos) << message;
}

INSTANTIATE_TEST_SUITE_P(
    Embedding, EveryRefused,
    testing::Values(Refused{"page.js", "a\0b"s, "/page/page.js:mustnotholdNULcharacters"},
                    Refused{"page.css", "b{}\r\n", "/page/page.css:mustnotholdcarriagereturns"},
                    Refused{"page.js", std::string(20000, 'x'), "/page/*.js:hasalinethatistoolong"},
                    Refused{"page.css", "a)kelda\"b", "/page/*.css:mustnothold)kelda\""},
                    Refused{"page.html", "<style>{{style}}</style><script> {{script}}</script>",
                            "/page/page.html:musthold<script>{{script}}</script>"},
                    Refused{"page.html", "<style>\n{{style}}</style><script>{{script}}</script>",
                            "/page/page.html:musthold<style>{{style}}</style>"}));

TEST_F(Embedding, RefusesWhatWouldEndTheElementAroundIt) {
    for (auto const* const text : {"</script>", "</SCRIPT >", "<script>", "<!--"}) {
        write("page.js", text);
        EXPECT_NE(refusal().find("must not hold <"), std::string::npos) << text;
    }
    write("page.js", "f();");
    write("page.css", "</style>");
    EXPECT_NE(refusal().find("must not hold </style"), std::string::npos);
}

} // namespace
