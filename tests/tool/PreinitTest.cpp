// kelda preinit: small devices, whole outputs.
#include <gtest/gtest.h>

#include "support/Device.h"
#include "support/KeldaProgram.h"

namespace {

using Json = nlohmann::ordered_json;
using support::Device;
using support::KeldaProgram;
using support::Words;

support::Outcome preinit(Device const& device, Words const& more = {}) {
    return KeldaProgram().run(Words{"preinit", "--preinit", device.preinitDir()} + more);
}

struct SmallDevice : Device {
    SmallDevice() {
        preinit("B", "agent/%cellId/status,Agent::Status,createOnMount\n")
            .preinit("A", "CONFIG:sys/config/name,Config::Name\n"
                          "%peerCellPath/state,State,createonstandby\n");
    }
};

TEST(Preinit, PrintsATable) {
    auto const outcome = preinit(SmallDevice());
    EXPECT_EQ(outcome.out,
              "PATH                    TYPE           ATTRIBUTE        CONFIG\n"
              "agent/%cellId/status    Agent::Status  createOnMount    -\n"
              "cell/%peerCellId/state  State          createOnStandby  -\n"
              "sys/config/name         Config::Name   -                config\n"
              "\n"
              "3 paths (1 createOnMount, 1 createOnStandby, 1 config), 7 wildcard paths with a "
              "type\n");
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.status, 0);
}

TEST(Preinit, PrintsADocument) {
    auto const outcome = preinit(SmallDevice(), {"--format", "json"});
    EXPECT_EQ(outcome.out, R"({
  "paths": [
    {
      "path": "agent/%cellId/status",
      "type": "Agent::Status",
      "attr": "createOnMount",
      "config": false
    },
    {
      "path": "cell/%peerCellId/state",
      "type": "State",
      "attr": "createOnStandby",
      "config": false
    },
    {
      "path": "sys/config/name",
      "type": "Config::Name",
      "attr": "",
      "config": true
    }
  ],
  "types": {
    "agent/*/status": "Agent::Status",
    "cell": "Fen::Dir",
    "cell/*": "Fen::Dir",
    "cell/*/state": "State",
    "sys": "Fen::Dir",
    "sys/config": "Fen::Dir",
    "sys/config/name": "Config::Name"
  }
}
)");
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.status, 0);
}

TEST(Preinit, OfAnEmptyFolderIsEmpty) {
    Device const device;
    EXPECT_EQ(preinit(device).out, "PATH  TYPE  ATTRIBUTE  CONFIG\n"
                                   "\n"
                                   "0 paths (0 createOnMount, 0 createOnStandby, 0 config), "
                                   "0 wildcard paths with a type\n");
    EXPECT_EQ(preinit(device, {"--format", "json"}).json(),
              Json::parse(R"({"paths": [], "types": {}})"));
}

TEST(Preinit, ListsPathsInByteOrder) {
    Device device;
    device.preinit("P", "b,T\na/b,T\nB,T\na-b,T\na,T\n\u00e9,T\n");
    auto const document = preinit(device, {"--format", "json"}).json();
    std::vector<std::string> paths;
    for (auto const& path : document["paths"])
        paths.push_back(path["path"]);
    EXPECT_EQ(paths, (Words{"B", "a", "a-b", "a/b", "b", "\u00e9"}));
}

// Two tokens of one wildcard path share its type, the one that was declared last.
TEST(Preinit, GivesEachTokenPathTheTypeOfItsWildcardPath) {
    Device device;
    device.preinit("P", "cell/%cellId/x,Old\ncell/%peerCellId/x,New\n");
    auto const document = preinit(device, {"--format", "json"}).json();
    EXPECT_EQ(document["paths"][0]["type"], "New");
    EXPECT_EQ(document["paths"][1]["type"], "New");
    EXPECT_EQ(document["types"]["cell/*/x"], "New");
}

TEST(Preinit, APathMayHoldAStarOfItsOwn) {
    Device device;
    device.preinit("P", "a/*,T,createOnMount\n");
    EXPECT_EQ(preinit(device, {"--format", "json"}).json(),
              Json::parse(R"({"paths": [{"path": "a/*", "type": "T", "attr": "createOnMount",
                                         "config": false}], "types": {"a/*": "T"}})"));
}

TEST(Preinit, ReadsNoProfile) {
    Device device;
    device.preinit("P", "a,T\n").profile("Broken", "agentName:A\nno such keyword\n");
    EXPECT_EQ(preinit(device).status, 0);
}

TEST(Preinit, TheDefaultFolderIsTheSystems) {
    auto const byDefault = KeldaProgram().run({"preinit", "--format", "json"});
    auto const named =
        KeldaProgram().run({"preinit", "--format", "json", "--preinit", "/usr/lib64/preinit"});
    EXPECT_EQ(byDefault.out, named.out);
    EXPECT_EQ(byDefault.status, named.status);
    if (!std::filesystem::exists("/usr/lib64/preinit")) {
        EXPECT_EQ(byDefault.json()["error"]["message"], "Cannot open directory /usr/lib64/preinit");
    }
}

TEST(Preinit, TheDefaultFolderOfProfilesIsTheSystems) {
    Device const device;
    Words const call{"mounts", "A", "--format", "json", "--preinit", device.preinitDir()};
    auto const byDefault = KeldaProgram().run(call);
    auto const named =
        KeldaProgram().run(call + Words{"--profiles", "/usr/lib64/KeldaMountProfiles"});
    EXPECT_EQ(byDefault.out, named.out);
    EXPECT_EQ(byDefault.status, named.status);
    if (!std::filesystem::exists("/usr/lib64/KeldaMountProfiles")) {
        EXPECT_EQ(byDefault.json()["error"]["message"],
                  "Cannot open directory /usr/lib64/KeldaMountProfiles");
    }
}

} // namespace
