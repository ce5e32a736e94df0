// kelda mounts with --path, --file or --group: only the mounts that were asked for.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/Device.h"
#include "support/Faults.h"
#include "support/KeldaProgram.h"

namespace {

using Json = nlohmann::ordered_json;
using support::Device;
using support::KeldaProgram;
using support::Words;
using testing::Contains;

// Agent A mounts a/b and a/c from its own file, which includes inc.one and inc.two, and x/y from
// the default group.
class SelectedMounts : public testing::Test {
  protected:
    SelectedMounts() {
        device_.preinit("P", "a/b,B\na/c,C\none,One\ntwo,Two\nx/y,Y\n")
            .profile("A", "agentName:A\nactiveMount\na/c,C,r\nInclude:inc.*\nMountGroup:g\n"
                          "a/b,B,w\n")
            .profile("inc.one", "one,One,r\n")
            .profile("inc.two", "two,Two,r\na/b,B,r\n")
            .profile("DefaultMountGroup", "x/y,Y,r\n");
    }
    support::Outcome mounts(Words const& selection) const {
        return KeldaProgram().run(Words{"mounts", "A"} +
                                  support::foldersOf(device_.directory().path()) + selection);
    }
    Json document(Words const& selection) const {
        return mounts(selection + Words{"--format", "json"}).json();
    }
    Words paths(Words const& selection) const {
        auto const all = document(selection);
        Words paths;
        for (auto const& mount : all["mounts"])
            paths.push_back(mount["path"]);
        return paths;
    }
    Device device_;
};

TEST_F(SelectedMounts, OfAPathIsPrintedToTheLetter) {
    auto const outcome = mounts({"--path", "a/b", "--format", "json"});
    EXPECT_EQ(outcome.out, R"({
  "agent": "A",
  "foundMountProfile": true,
  "path": "a/b",
  "mounts": [
    {
      "path": "a/b",
      "type": "B",
      "flags": "rw",
      "explicit": true
    }
  ]
}
)");
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.status, 0);
}

TEST_F(SelectedMounts, OfAPathIsATable) {
    auto const outcome = mounts({"--path", "a/b"});
    EXPECT_EQ(outcome.out, "PATH  TYPE  FLAGS  KIND      GROUPS     FILES\n"
                           "a/b   B     rw     explicit  A::, A::g  A, inc.two\n"
                           "\n"
                           "Agent A: 1 mount (1 explicit, 0 intermediate) at path a/b\n");
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.status, 0);
}

TEST_F(SelectedMounts, OfAnIntermediatePathIsTold) {
    EXPECT_EQ(document({"--path", "a"})["mounts"], Json::parse(R"([
        {"path": "a", "type": "Fen::Dir", "flags": "tny", "explicit": false}])"));
    EXPECT_EQ(mounts({"--path", "a"}).out,
              "PATH  TYPE      FLAGS  KIND          GROUPS  FILES\n"
              "a     Fen::Dir  tny    intermediate  -       -\n"
              "\n"
              "Agent A: 1 mount (0 explicit, 1 intermediate) at path a\n");
}

TEST_F(SelectedMounts, OfAPathDoesNotMindASlashAtItsEnd) {
    EXPECT_EQ(mounts({"--path", "a/b/"}).out, mounts({"--path", "a/b"}).out);
    EXPECT_EQ(document({"--path", "a/b/"}), document({"--path", "a/b"}));
}

TEST_F(SelectedMounts, OfAFileArePrintedToTheLetter) {
    auto const outcome = mounts({"--file", "inc.two", "--format", "json"});
    EXPECT_EQ(outcome.out, R"({
  "agent": "A",
  "foundMountProfile": true,
  "file": "inc.two",
  "withIncludes": false,
  "mounts": [
    {
      "path": "a/b",
      "type": "B",
      "flags": "rw",
      "explicit": true
    },
    {
      "path": "two",
      "type": "Two",
      "flags": "r",
      "explicit": true
    }
  ]
}
)");
    EXPECT_EQ(outcome.status, 0);
}

TEST_F(SelectedMounts, OfAFileAreATable) {
    EXPECT_EQ(mounts({"--file", "inc.two"}).out,
              "PATH  TYPE  FLAGS  KIND      GROUPS     FILES\n"
              "a/b   B     rw     explicit  A::, A::g  A, inc.two\n"
              "two   Two   r      explicit  A::        inc.two\n"
              "\n"
              "Agent A: 2 mounts (2 explicit, 0 intermediate) from file inc.two\n");
}

TEST_F(SelectedMounts, OfAFileAreThoseOfItsIncludesTooIfAskedFor) {
    EXPECT_EQ(paths({"--file", "A"}), (Words{"a/b", "a/c"}));
    EXPECT_EQ(paths({"--file", "A", "--with-includes"}), (Words{"a/b", "a/c", "one", "two"}));
    EXPECT_EQ(document({"--file", "A", "--with-includes"})["withIncludes"], true);
    EXPECT_TRUE(mounts({"--file", "A", "--with-includes"})
                    .out.ends_with("\nAgent A: 4 mounts (4 explicit, 0 intermediate) from file A "
                                   "and what it includes\n"));
}

TEST_F(SelectedMounts, OfFilesThatBeginAlikeAreThoseOfAllOfThem) {
    EXPECT_EQ(paths({"--file", "inc.*"}), (Words{"a/b", "one", "two"}));
    EXPECT_EQ(paths({"--file", "*"}), (Words{"a/b", "a/c", "one", "two", "x/y"}));
    EXPECT_EQ(document({"--file", "inc.*"})["file"], "inc.*");
    EXPECT_TRUE(mounts({"--file", "inc.*"}).out.ends_with("from files inc.*\n"));
    EXPECT_TRUE(mounts({"--file", "*", "--with-includes"})
                    .out.ends_with("from files * and what they include\n"));
}

TEST_F(SelectedMounts, OfAGroupArePrintedToTheLetter) {
    EXPECT_EQ(mounts({"--group", "A::default", "--format", "json"}).out, R"({
  "agent": "A",
  "foundMountProfile": true,
  "group": "A::default",
  "mounts": [
    {
      "path": "x/y",
      "type": "Y",
      "flags": "r",
      "explicit": true
    }
  ]
}
)");
}

TEST_F(SelectedMounts, OfAGroupAreATable) {
    EXPECT_EQ(mounts({"--group", "A::g"}).out,
              "PATH  TYPE  FLAGS  KIND      GROUPS     FILES\n"
              "a/b   B     rw     explicit  A::, A::g  A, inc.two\n"
              "\n"
              "Agent A: 1 mount (1 explicit, 0 intermediate) in group A::g\n");
}

TEST_F(SelectedMounts, OfPathsBeforeAnyGroupHaveAGroupWithoutAName) {
    EXPECT_EQ(paths({"--group", "A::"}), (Words{"a/b", "a/c", "one", "two"}));
}

TEST_F(SelectedMounts, AreAmongAllMountsAsTheyAre) {
    auto const whole = document({});
    for (auto const& selection : {Words{"--file", "*"}, Words{"--group", "A::"}}) {
        auto const selected = document(selection);
        EXPECT_GT(selected["mounts"].size(), 1U);
        for (auto const& mount : selected["mounts"])
            EXPECT_THAT(whole["mounts"], Contains(mount));
    }
}

TEST_F(SelectedMounts, AreThoseOfTheOverride) {
    device_.preinit("Q", "agent/%a,T,createOnMount\n")
        .profile("A", "agentName:A\nagent/%agentString,T,r\n");
    EXPECT_EQ(paths({"--file", "A", "--override", "B"}), (Words{"agent/B"}));
    EXPECT_EQ(paths({"--path", "agent/B", "--override", "B"}), (Words{"agent/B"}));
}

struct Missing {
    Words selection;
    std::string message; // before what the library says about the agents it serves
};

std::vector<Missing> const missing = {
    {{"--path", "no/such"}, "mountInfo: no such path: no/such"},
    {{"--path", "A/"}, "mountInfo: no such path: A"},
    {{"--path", "a//"}, "mountInfo: no such path: a/"},
    {{"--file", "nothing"}, "profileFilePaths: no such file: nothing"},
    {{"--file", "not*"}, "profileFilePaths: no such files: not*"},
    {{"--file", "inc", "--with-includes"}, "profileFilePaths: no such file: inc"},
    {{"--group", "g"}, "mountGroupPaths: no such mount group: g"},
    {{"--group", "B::g"}, "mountGroupPaths: no such mount group: B::g"},
};

TEST_F(SelectedMounts, ThatAreNotThereAreTheLibrarysFault) {
    for (auto const& [selection, message] : missing) {
        auto const outcome = mounts(selection + Words{"--format", "json"});
        Json const fault = {
            {"file", ""}, {"line", -1}, {"message", message + support::loadedAgents(" A")}};
        EXPECT_EQ(outcome.json(), (Json{{"error", fault}}));
        EXPECT_EQ(outcome.err, "");
        EXPECT_EQ(outcome.status, 1);
    }
}

TEST_F(SelectedMounts, ThatAreNotThereAreToldToPeople) {
    for (auto const& [selection, message] : missing) {
        auto const outcome = mounts(selection);
        EXPECT_TRUE(outcome.err.starts_with("kelda: " + message + "\n\n    This particular error"))
            << outcome.err;
        EXPECT_EQ(outcome.out, "");
        EXPECT_EQ(outcome.status, 1);
    }
}

TEST_F(SelectedMounts, OfABrokenDeviceAreTheFaultOfTheLoad) {
    device_.profile("B", "agentName:A\nwrong\n");
    for (auto const& selection :
         {Words{"--path", "a/b"}, Words{"--file", "A"}, Words{"--group", "A::g"}}) {
        auto const outcome = mounts(selection);
        EXPECT_EQ(outcome.err, "B:2: syntax error: 'wrong'\n");
        EXPECT_EQ(outcome.out, "");
        EXPECT_EQ(outcome.status, 1);
    }
}

TEST_F(SelectedMounts, OfAnAgentWithoutProfileAreNoneOfAnotherAgents) {
    auto const outcome =
        KeldaProgram().run(Words{"mounts", "Nobody", "--path", "a/b", "--format", "json"} +
                           support::foldersOf(device_.directory().path()));
    EXPECT_EQ(outcome.json()["error"]["message"],
              "mountInfo: no such path: a/b" + support::loadedAgents(" Nobody"));
    EXPECT_EQ(outcome.status, 1);
}

} // namespace
