// The page of a report: what is put where, and what the page may do.
#include <gtest/gtest.h>

#include <cstdio>

#include "report/ReportPage.h"
#include "support/TemporaryDirectory.h"

namespace {

using namespace std::string_literals;
using KeldaTool::base64OfHex;
using KeldaTool::builtInPage;
using KeldaTool::htmlText;
using KeldaTool::PageAssets;
using KeldaTool::reportPage;

PageAssets assetsOf(std::string_view page) {
    return {page, "{{script}}", "{{data}} {{style}}", "00", "ffff"};
}

struct Filled {
    std::string page;
    std::string filled;
};

class EveryPage : public testing::TestWithParam<Filled> {};

TEST_P(EveryPage, IsFilledOnce) {
    EXPECT_EQ(reportPage(assetsOf(GetParam().page), "<{{data}}>", "{\"{{title}}\"}"),
              GetParam().filled);
}

INSTANTIATE_TEST_SUITE_P(
    ReportPage, EveryPage,
    testing::Values(Filled{"", ""}, Filled{"no place", "no place"},
                    Filled{"{{title}}", "&lt;{{data}}&gt;"},
                    Filled{"{{data}}{{data}}", "{\"{{title}}\"}{\"{{title}}\"}"},
                    Filled{"a{{style}}b{{script}}c", "a{{script}}b{{data}} {{style}}c"},
                    Filled{"{{other}} {{ {{{title}}", "{{other}} {{ {&lt;{{data}}&gt;"},
                    Filled{"{{title} {{Title}} {{", "{{title} {{Title}} {{"}));

TEST(ReportPage, NamesTheStyleAndTheScriptInItsSecurityPolicy) {
    EXPECT_EQ(reportPage(assetsOf("{{csp}}"), "", ""),
              "default-src 'none'; style-src 'sha256-AA=='; script-src 'sha256-//8='; "
              "img-src data:; base-uri 'none'; form-action 'none'");
}

struct Encoded {
    std::string hex;
    std::string base64;
};

class EveryHash : public testing::TestWithParam<Encoded> {};

TEST_P(EveryHash, IsWrittenInBase64) {
    EXPECT_EQ(base64OfHex(GetParam().hex), GetParam().base64);
}

// "foobar" and its beginnings, and the SHA-256 of "abc".
INSTANTIATE_TEST_SUITE_P(
    ReportPage, EveryHash,
    testing::Values(Encoded{"", ""}, Encoded{"66", "Zg=="}, Encoded{"666f", "Zm8="},
                    Encoded{"666f6f", "Zm9v"}, Encoded{"666f6f62", "Zm9vYg=="},
                    Encoded{"666f6f6261", "Zm9vYmE="}, Encoded{"666f6f626172", "Zm9vYmFy"},
                    Encoded{"ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad",
                            "ungWv48Bz+pBQUDeXa4iI7ADYaOWF3qctBD/YfIAFa0="}));

struct Html {
    std::string bytes;
    std::string html;
};

class EveryTitle : public testing::TestWithParam<Html> {};

TEST_P(EveryTitle, CannotBecomePartOfThePage) {
    EXPECT_EQ(htmlText(GetParam().bytes), GetParam().html);
}

INSTANTIATE_TEST_SUITE_P(ReportPage, EveryTitle,
                         testing::Values(Html{"Image 7", "Image 7"},
                                         Html{"\u00c4\u20ac", "\u00c4\u20ac"},
                                         Html{"</title><script>", "&lt;/title&gt;&lt;script&gt;"},
                                         Html{"a & \"b\" 'c'", "a &amp; &quot;b&quot; &#39;c&#39;"},
                                         Html{"a\tb\nc", "a\tb\nc"},
                                         Html{"\0\x1b\r\x7f"s, "\ufffd\ufffd\ufffd\ufffd"},
                                         Html{"\xff\xe2\x80", "\ufffd\ufffd"}));

// What another program makes of the same bytes.
std::string sha256Of(std::string_view text) {
    support::TemporaryDirectory const directory;
    auto const command = "sha256sum < " + directory.write("text", text);
    auto* const pipe = popen(command.c_str(), "r");
    std::string digits(64, ' ');
    auto const count = std::fread(digits.data(), 1, digits.size(), pipe);
    return pclose(pipe) == 0 ? digits.substr(0, count) : "";
}

TEST(BuiltInPage, KnowsTheHashesOfWhatItHolds) {
    EXPECT_EQ(builtInPage().styleSha256, sha256Of(builtInPage().style));
    EXPECT_EQ(builtInPage().scriptSha256, sha256Of(builtInPage().script));
}

std::size_t occurrences(std::string_view text, std::string_view what) {
    std::size_t count = 0;
    for (auto at = text.find(what); at != std::string_view::npos; at = text.find(what, at + 1))
        ++count;
    return count;
}

TEST(BuiltInPage, HoldsEveryPlace) {
    for (auto const* const place : {"{{title}}", "{{csp}}", "{{style}}", "{{script}}", "{{data}}"})
        EXPECT_GE(occurrences(builtInPage().page, place), 1U) << place;
    EXPECT_EQ(occurrences(builtInPage().page, "content=\"{{csp}}\""), 1U);
    EXPECT_EQ(occurrences(builtInPage().page,
                          "<script type=\"application/json\" id=\"device-data\">{{data}}</script>"),
              1U);
}

// The browser would not run or show what the policy does not name.
TEST(BuiltInPage, HasNoOtherStyleOrScriptThanThePolicyNames) {
    EXPECT_EQ(occurrences(builtInPage().page, "<style"), 1U);
    EXPECT_EQ(occurrences(builtInPage().page, "<script"), 2U);
    for (auto const* const what : {" style=", " src=", " onclick=", " onload=", "http:", "https:"})
        EXPECT_EQ(occurrences(builtInPage().page, what), 0U) << what;
}

} // namespace
