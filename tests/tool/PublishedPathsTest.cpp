// The program asks the published entity. Paths that the entity cannot be asked for are shown all
// the same.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/Device.h"
#include "support/KeldaProgram.h"

namespace {

using Json = nlohmann::ordered_json;
using support::Device;
using support::KeldaProgram;
using support::Words;
using testing::HasSubstr;

struct TracedCall {
    Words words;
    Words operations; // that the entity is seen to do
};

TEST(PublishedPaths, AreAskedOfTheEntity) {
    Device device;
    device.preinit("P", "a,T\nCONFIG:b,T\n").profile("A", "agentName:A\na,T,r\n");
    Words const preinit{"--preinit", device.preinitDir()};
    auto const folders = support::foldersOf(device.directory().path());
    for (auto const& [words, operations] : {
             TracedCall{Words{"mounts", "A"} + folders,
                        {"getMountPathInfo ( \"a\" )", "getMountPathInfoAll"}},
             TracedCall{Words{"mounts", "A", "--path", "a"} + folders,
                        {"getMountPathInfo ( \"a\" )"}},
             TracedCall{Words{"mounts", "A", "--file", "A"} + folders, {"getMountPathInfoFile"}},
             TracedCall{Words{"mounts", "A", "--group", "A::"} + folders,
                        {"getMountPathInfoGroup"}},
             TracedCall{Words{"preinit"} + preinit, {"getPreinitPathInfo"}},
             TracedCall{Words{"config"} + preinit, {"getConfigPathInfo"}},
         }) {
        auto const outcome = KeldaProgram().with("KELDA_TRACE", "MountFileInfoWrap=5").run(words);
        EXPECT_EQ(outcome.status, 0);
        for (auto const& operation : operations)
            EXPECT_THAT(outcome.err, HasSubstr(operation + "\n"));
    }
}

// Aliases without a value leave slashes where they were.
class OddPaths : public testing::Test {
  protected:
    OddPaths() {
        device_.preinit("P", "%a/x,X,createOnMount\ny/%a,Y,createOnMount\nz,Z\n")
            .profile("A", "agentName:A-%a\n%a/x,X,r\nz,Z,r\nMountGroup:g\ny/%a,Y,w\n");
    }
    Json document(Words const& selection = {}) const {
        auto const outcome =
            KeldaProgram().run(Words{"mounts", "A-", "--format", "json"} +
                               support::foldersOf(device_.directory().path()) + selection);
        EXPECT_EQ(outcome.err, "");
        return outcome.json();
    }
    Device device_;
};

Json const oddX = {{"path", "/x"}, {"type", "X"}, {"flags", "r"}, {"explicit", true}};
Json const oddY = {{"path", "y/"}, {"type", "Y"}, {"flags", "w"}, {"explicit", true}};
Json const evenZ = {{"path", "z"}, {"type", "Z"}, {"flags", "r"}, {"explicit", true}};

TEST_F(OddPaths, AreShown) {
    EXPECT_EQ(document()["mounts"], (Json{oddX, oddY, evenZ}));
    EXPECT_EQ(document()["agentPaths"], (Json{"/x", "y/", "z"}));
}

TEST_F(OddPaths, AreShownOfAFile) {
    EXPECT_EQ(document({"--file", "A"})["mounts"], (Json{oddX, oddY, evenZ}));
}

TEST_F(OddPaths, AreShownOfAGroup) {
    EXPECT_EQ(document({"--group", "A::"})["mounts"], (Json{oddX, evenZ}));
    EXPECT_EQ(document({"--group", "A::g"})["mounts"], Json::array({oddY}));
}

TEST(OddPreinitPaths, DoNotKeepTheOthersFromBeingShown) {
    Device device;
    device.preinit("P", "a/*,Star,createOnMount\na/%b,Token,createOnMount\nc,T,createOnStandby\n"
                        "CONFIG:d/*,Config\nnone,\n");
    auto const outcome =
        KeldaProgram().run({"preinit", "--preinit", device.preinitDir(), "--format", "json"});
    EXPECT_EQ(outcome.json()["paths"], Json::parse(R"([
        {"path": "a/%b", "type": "Token", "attr": "createOnMount", "config": false},
        {"path": "a/*", "type": "Token", "attr": "createOnMount", "config": false},
        {"path": "c", "type": "T", "attr": "createOnStandby", "config": false},
        {"path": "d/*", "type": "Config", "attr": "", "config": true},
        {"path": "none", "type": "", "attr": "", "config": false}])"));
    EXPECT_EQ(outcome.status, 0);
}

} // namespace
