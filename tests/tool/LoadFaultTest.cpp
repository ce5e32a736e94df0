// What the program says when a file cannot be loaded.
#include <gtest/gtest.h>

#include "support/Device.h"
#include "support/KeldaProgram.h"

namespace {

using Json = nlohmann::ordered_json;
using support::Device;
using support::KeldaProgram;
using support::Words;

support::Outcome mounts(Device const& device, Words const& more = {}) {
    return KeldaProgram().run(Words{"mounts", "A"} + support::foldersOf(device.directory().path()) +
                              more);
}

struct FaultyProfile {
    char const* text;
    char const* message; // as people see it
};

TEST(LoadFault, IsToldWithFileLineAndMessage) {
    for (auto const& [text, message] : {
             FaultyProfile{"agentName:A\nno such keyword\n",
                           "A:2: syntax error: 'nosuchkeyword'\n"},
             {"# one\n\n# three\nagentName:A\n\n\na,T,rx\n",
              "A:7: Encountered unknown mount flag x\n"},
             {"agentName:A\na,T,\\\n r\n\na/%b,T,r\n",
              "A:5: No type info for path 'a/%b' found in preinit files while loading profile file "
              "because the path was not loaded from any preinit...\n"},
             {"agentName:A\nInclude:missing\n",
              "A:2: Cannot find profile to include matching missing\n"},
             {"agentName:A\n# comment \\\n",
              "A:2: syntax error: multi-line comment: # comment \\\n"},
         }) {
        Device device;
        device.preinit("P", "a,T\n").profile("A", text);
        auto const outcome = mounts(device);
        EXPECT_EQ(outcome.err, message) << text;
        EXPECT_EQ(outcome.out, "") << text;
        EXPECT_EQ(outcome.status, 1) << text;
    }
}

TEST(LoadFault, AsJsonIsADocumentOnStandardOutput) {
    Device device;
    device.preinit("P", "a,T\n").profile("Fan", "agentName:A\na,T,r\n\nno such keyword\n");
    auto const outcome = mounts(device, {"--format", "json"});
    EXPECT_EQ(outcome.out, R"({
  "error": {
    "file": "Fan",
    "line": 4,
    "message": "syntax error: 'nosuchkeyword'"
  }
}
)");
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.status, 1);
}

TEST(LoadFault, InAnIncludedFileIsThere) {
    Device device;
    device.preinit("P", "a,T\n")
        .profile("A", "agentName:A\nInclude:common\n")
        .profile("common", "a,T,r\nMountGroup:g\n");
    EXPECT_EQ(mounts(device).err,
              "common:2: Syntax error in included file: 'MountGroup:g'. One may only specify mount "
              "paths or the activeMount keyword in an included file. For more information see "
              "REF482\n");
}

TEST(LoadFault, InAPreinitFileIsThere) {
    Device device;
    device.preinit("P", "a,T\n").preinit("Q", "a,T\nnonsense\n");
    EXPECT_EQ(mounts(device).err, "Q:2: preinit syntax error: nonsense\n");
    auto const preinit = KeldaProgram().run({"preinit", "--preinit", device.preinitDir()});
    EXPECT_EQ(preinit.err, "Q:2: preinit syntax error: nonsense\n");
    EXPECT_EQ(preinit.out, "");
    EXPECT_EQ(preinit.status, 1);
}

TEST(LoadFault, OfPreinitAsJsonIsADocument) {
    Device device;
    device.preinit("Q", "a,T\nnonsense\n");
    auto const outcome =
        KeldaProgram().run({"preinit", "--preinit", device.preinitDir(), "--format", "json"});
    EXPECT_EQ(outcome.json(), Json::parse(R"({"error": {
        "file": "Q", "line": 2, "message": "preinit syntax error: nonsense"}})"));
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.status, 1);
}

TEST(LoadFault, WithoutAFileIsToldInTheNameOfTheProgram) {
    Device const device;
    auto const missing = (device.directory() / "missing").string();
    auto const outcome = mounts(device, {"--format", "json"});
    EXPECT_EQ(outcome.status, 0);
    Words const call{"mounts", "A", "--preinit", device.preinitDir(), "--profiles", missing};
    auto const people = KeldaProgram().run(call);
    EXPECT_EQ(people.err, "kelda: Cannot open directory " + missing + "\n");
    EXPECT_EQ(people.out, "");
    EXPECT_EQ(people.status, 1);
    auto const document = KeldaProgram().run(call + Words{"--format", "json"});
    EXPECT_EQ(document.json()["error"],
              (Json{{"file", ""}, {"line", -1}, {"message", "Cannot open directory " + missing}}));
    EXPECT_EQ(document.err, "");
    EXPECT_EQ(document.status, 1);
}

TEST(LoadFault, FurtherLinesOfAMessageAreIndented) {
    Device device;
    device.preinit("P", "a,T\na,T,createOnMount\n");
    EXPECT_EQ(mounts(device).err, "P:2: Redefining attribute for a\n"
                                  "    Old Attribute: \n"
                                  "    New Attribute: createOnMount\n");
}

TEST(LoadFault, KeepsTheMessageOfTheLibraryInTheDocument) {
    Device device;
    device.preinit("P", "a,T\na,T,createOnMount\n");
    EXPECT_EQ(mounts(device, {"--format", "json"}).json()["error"]["message"],
              "Redefining attribute for a\nOld Attribute: \nNew Attribute: createOnMount");
}

} // namespace
