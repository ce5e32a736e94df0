// The JSON that stands within a page of HTML.
#include <gtest/gtest.h>

#include <rapidcheck/gtest.h>

#include <nlohmann/json.hpp>

#include "Text.h"
#include "report/CompactJson.h"

namespace {

using namespace std::string_literals;
using KeldaTool::CompactJson;

std::string textOf(std::string_view bytes) {
    CompactJson json;
    json.text(bytes);
    return json.take();
}

struct Written {
    std::string bytes;
    std::string json;
};

class EveryText : public testing::TestWithParam<Written> {};

TEST_P(EveryText, IsWrittenSoThatNothingInItEndsTheElementAroundIt) {
    EXPECT_EQ(textOf(GetParam().bytes), GetParam().json);
}

INSTANTIATE_TEST_SUITE_P(
    CompactJson, EveryText,
    testing::Values(Written{"", R"("")"}, Written{"sys/clock", R"("sys/clock")"},
                    Written{"</script>", R"("\u003c/script\u003e")"},
                    Written{"<!--", R"("\u003c!--")"}, Written{"]]>", R"("]]\u003e")"},
                    Written{"&amp;", R"("\u0026amp;")"}, Written{"{{data}}", R"("{{data}}")"},
                    Written{"\"\\/'", R"("\"\\/'")"},
                    Written{"\n\t\r\x1f\x7f", "\"\\u000a\\u0009\\u000d\\u001f\x7f\""},
                    Written{"a\0b"s, R"("a\u0000b")"},
                    Written{"\u00e4\u20ac\U0001f600", "\"\u00e4\u20ac\U0001f600\""},
                    Written{"a\u2028b\u2029c", R"("a\u2028b\u2029c")"},
                    Written{"\u2027\u202a", "\"\u2027\u202a\""},
                    Written{"\xff<\xe2\x80", "\"\ufffd\\u003c\ufffd\""},
                    Written{"\xe2\x80\xff\xa8", "\"\ufffd\ufffd\ufffd\""}));

RC_GTEST_PROP(CompactJson, TextsAreReadAsTheyWere, (std::string const& bytes)) {
    auto const json = textOf(bytes);
    RC_ASSERT(nlohmann::json::parse(json).get<std::string>() == KeldaTool::replaceNonUtf8(bytes));
    RC_ASSERT(json.find_first_of("<>&") == std::string::npos);
}

TEST(CompactJson, PutsCommasBetweenItemsAndNothingElse) {
    CompactJson json;
    json.beginObject();
    json.number("n", -7);
    json.beginArray("a");
    json.beginArray();
    json.endArray();
    json.beginObject();
    json.endObject();
    json.text("x");
    json.boolean(false);
    json.written("[1]");
    json.endArray();
    json.boolean("b", true);
    json.text("t", "u");
    json.beginObject("o");
    json.endObject();
    json.endObject();
    EXPECT_EQ(json.take(), R"({"n":-7,"a":[[],{},"x",false,[1]],"b":true,"t":"u","o":{}})");
}

} // namespace
