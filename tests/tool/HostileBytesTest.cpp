// Files and arguments with bytes that are no text: they never make the program fail, never reach a
// terminal as they are, and never make a document invalid.
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>

#include "support/Device.h"
#include "support/KeldaProgram.h"

namespace {

using support::Device;
using support::KeldaProgram;
using support::Words;

// A device on which agent A mounts one path.
struct DeviceWithPath : Device {
    explicit DeviceWithPath(std::string const& path) {
        preinit("P", path + ",T\n").profile("A", "agentName:A\n" + path + ",T,r\n");
    }
};

support::Outcome mounts(Device const& device, Words const& more = {}) {
    return KeldaProgram().run(Words{"mounts", "A"} + support::foldersOf(device.directory().path()) +
                              more);
}

struct Shown {
    std::string path;
    std::string inTable;
    std::string inDocument;
};

std::vector<Shown> const shownPaths = {
    {"a\x1b[31mb", "a\\x1b[31mb", "a\x1b[31mb"},
    {"bell\a", "bell\\x07", "bell\a"},
    {"back\b\b\b\bfront", "back\\x08\\x08\\x08\\x08front", "back\b\b\b\bfront"},
    {"delete\x7f", "delete\\x7f", "delete\x7f"},
    {"alone\x80", "alone\\x80", "alone\ufffd"},
    {"never\xff\xfe", "never\\xff\\xfe", "never\ufffd\ufffd"},
    {"cut\xe2\x82!", "cut\\xe2\\x82!", "cut\ufffd!"},
    {"long form\xc0\xaf", "longform\\xc0\\xaf", "longform\ufffd\ufffd"},
    {"surrogate\xed\xa0\x80", "surrogate\\xed\\xa0\\x80", "surrogate\ufffd\ufffd\ufffd"},
    {"too large\xf4\x90\x80\x80", "toolarge\\xf4\\x90\\x80\\x80",
     "toolarge\ufffd\ufffd\ufffd\ufffd"},
    {"control\xc2\x9b"
     "31m",
     "control\\u{9b}31m",
     "control\u009b"
     "31m"},
    {"turned\u202etxt", "turned\\u{202e}txt", "turned\u202etxt"},
    {"hidden\u200b", "hidden\\u{200b}", "hidden\u200b"},
    {"quote\"brace}", "quote\"brace}", "quote\"brace}"},
};

class HostilePath : public testing::TestWithParam<Shown> {};

TEST_P(HostilePath, IsEscapedInTheTable) {
    auto const outcome = mounts(DeviceWithPath(GetParam().path));
    auto const row = outcome.out.substr(outcome.out.find('\n') + 1);
    EXPECT_TRUE(row.starts_with(GetParam().inTable + "  T     r  ")) << row;
    EXPECT_EQ(outcome.status, 0);
}

TEST_P(HostilePath, IsUtf8InTheDocument) {
    auto const outcome = mounts(DeviceWithPath(GetParam().path), {"--format", "json"});
    EXPECT_EQ(outcome.json()["mounts"][0]["path"], GetParam().inDocument);
    EXPECT_EQ(outcome.json()["files"]["A"][0], GetParam().inDocument);
    EXPECT_EQ(outcome.status, 0);
}

TEST_P(HostilePath, IsUtf8InTheDocumentOfPreinitPaths) {
    DeviceWithPath const device(GetParam().path);
    auto const outcome =
        KeldaProgram().run({"preinit", "--preinit", device.preinitDir(), "--format", "json"});
    EXPECT_EQ(outcome.json()["paths"][0]["path"], GetParam().inDocument);
    EXPECT_EQ(outcome.json()["types"][GetParam().inDocument], "T");
}

TEST_P(HostilePath, IsFoundByItsBytes) {
    DeviceWithPath const device(GetParam().path);
    auto path = GetParam().path;
    std::erase(path, ' '); // blanks in files do not count
    auto const document = mounts(device, {"--path", path, "--format", "json"}).json();
    EXPECT_EQ(document["path"], GetParam().inDocument);
    EXPECT_EQ(document["mounts"].size(), 1U);
    EXPECT_TRUE(
        mounts(device, {"--path", path}).out.ends_with(" at path " + GetParam().inTable + "\n"));
}

TEST_P(HostilePath, IsUtf8InTheDocumentOfConfigPaths) {
    Device device;
    device.preinit("P", "CONFIG:" + GetParam().path + ",T\n");
    Words const call{"config", "--preinit", device.preinitDir()};
    auto const document = KeldaProgram().run(call + Words{"--format", "json"}).json();
    EXPECT_EQ(document["paths"][0]["path"], GetParam().inDocument);
    auto const table = KeldaProgram().run(call).out;
    EXPECT_NE(table.find("\n" + GetParam().inTable + "  T\n"), std::string::npos) << table;
}

INSTANTIATE_TEST_SUITE_P(HostileBytes, HostilePath, testing::ValuesIn(shownPaths));

TEST(HostileBytes, InAMessageAreEscapedForPeople) {
    Device device;
    device.profile("A", "agentName:A\nX\x1b]0;title\a\xff\n");
    auto const outcome = mounts(device);
    EXPECT_EQ(outcome.err, "A:2: syntax error: 'X\\x1b]0;title\\x07\\xff'\n");
    EXPECT_EQ(outcome.status, 1);
}

TEST(HostileBytes, InAMessageAreReplacedInTheDocument) {
    Device device;
    device.profile("A", "agentName:A\nX\xff\n");
    auto const outcome = mounts(device, {"--format", "json"});
    EXPECT_EQ(outcome.json()["error"]["message"], "syntax error: 'X\ufffd'");
    EXPECT_EQ(outcome.status, 1);
}

TEST(HostileBytes, InANameOfAFileAreEscaped) {
    Device device;
    device.profile("A\nB:1: all is well\x1b[0m", "agentName:A\nwrong\n");
    EXPECT_EQ(mounts(device).err, "A\\x0aB:1: all is well\\x1b[0m:2: syntax error: 'wrong'\n");
}

// Two files whose names are the same once replaced.
TEST(HostileBytes, ThatBecomeTheSameKeyShareAMember) {
    Device device;
    device.preinit("P", "a,T\nb,T\n")
        .profile("F\xff", "agentName:A\na,T,r\n")
        .profile("F\xfe", "agentName:A\nb,T,r\n");
    auto const files = mounts(device, {"--format", "json"}).json()["files"];
    EXPECT_EQ(files.size(), 1U);
    EXPECT_EQ(files["F\ufffd"], (nlohmann::ordered_json{"b", "a"}));
}

TEST(HostileBytes, InTheAgentStringAreEscaped) {
    Device const device;
    auto const outcome = KeldaProgram().run(Words{"mounts", "A\x1b[31m\nB"} +
                                            support::foldersOf(device.directory().path()));
    EXPECT_EQ(outcome.err, "kelda: note: no mount profile is for agent 'A\\x1b[31m\\x0aB'\n");
    EXPECT_NE(outcome.out.find("\nAgent A\\x1b[31m\\x0aB: active"), std::string::npos);
}

TEST(HostileBytes, InTheNamesOfASelectionAreEscaped) {
    Device device;
    device.preinit("P", "a,T\n").profile("F\xff\n", "agentName:A\nMountGroup:g\x1b\na,T,r\n");
    EXPECT_TRUE(mounts(device, {"--file", "F\xff\n"}).out.ends_with(" from file F\\xff\\x0a\n"));
    EXPECT_TRUE(mounts(device, {"--group", "A::g\x1b"}).out.ends_with(" in group A::g\\x1b\n"));
    auto const document = mounts(device, {"--file", "F\xff\n", "--format", "json"}).json();
    EXPECT_EQ(document["file"], "F\ufffd\n");
    EXPECT_EQ(document["mounts"].size(), 1U);
}

TEST(HostileBytes, InANameThatIsNotThereAreEscaped) {
    Device const device;
    for (std::string const option : {"--path", "--file", "--group"}) {
        auto const people = mounts(device, {option, "no\x1b\xff"});
        EXPECT_NE(people.err.find(": no\\x1b\\xff\n"), std::string::npos) << people.err;
        EXPECT_EQ(people.status, 1);
        auto const document = mounts(device, {option, "no\x1b\xff", "--format", "json"});
        EXPECT_NE(document.json()["error"]["message"].get<std::string>().find(": no\x1b\ufffd\n"),
                  std::string::npos);
    }
}

bool isPlain(unsigned char byte) {
    return byte == '\n' || (byte >= 0x20 && byte != 0x7f);
}

RC_GTEST_PROP(HostileBytesProperty, AnyAgentStringHasATableAndADocument, ()) {
    auto const agent = *rc::gen::nonEmpty(rc::gen::container<std::string>(
        rc::gen::map(rc::gen::inRange(1, 256), [](int byte) { return static_cast<char>(byte); })));
    Device const device;
    auto const folders = support::foldersOf(device.directory().path());
    auto const table = KeldaProgram().run(Words{"mounts"} + folders + Words{"--", agent});
    RC_ASSERT(table.status == 0);
    RC_ASSERT(std::all_of(table.out.begin(), table.out.end(), isPlain));
    auto const document =
        KeldaProgram().run(Words{"mounts", "--format", "json"} + folders + Words{"--", agent});
    RC_ASSERT(document.status == 0);
    RC_ASSERT(document.json()["mounts"].empty());
}

// Whatever is asked for is there or is not; it is never a reason to end otherwise.
RC_GTEST_PROP(HostileBytesProperty, AnySelectionHasAnAnswer, ()) {
    auto const name = *rc::gen::nonEmpty(rc::gen::container<std::string>(
        rc::gen::map(rc::gen::inRange(1, 256), [](int byte) { return static_cast<char>(byte); })));
    auto const option = *rc::gen::element<std::string>("--path", "--file", "--group");
    DeviceWithPath const device("a/b");
    auto const outcome = mounts(device, {"--format", "json", option + "=" + name});
    if (option == "--path" && name.front() == '/') {
        RC_ASSERT(outcome.status == 2);
        return;
    }
    auto const document = outcome.json();
    RC_ASSERT(document.contains("error") || document.contains("mounts"));
    RC_ASSERT(outcome.status == (document.contains("error") ? 1 : 0));
}

} // namespace
