// kelda config: small devices, whole outputs.
#include <gtest/gtest.h>

#include "support/Device.h"
#include "support/KeldaProgram.h"

namespace {

using Json = nlohmann::ordered_json;
using support::Device;
using support::KeldaProgram;
using support::Words;

support::Outcome config(Device const& device, Words const& more = {}) {
    return KeldaProgram().run(Words{"config", "--preinit", device.preinitDir()} + more);
}

struct SmallDevice : Device {
    SmallDevice() {
        preinit("A", "CONFIG:sys/config/name,Config::Name\nsys/clock,Clock\n"
                     "config:sys/config,Config::Root\n")
            .preinit("B", "CONFIG:B,T\nCONFIG:\u00e9,T\n");
    }
};

TEST(Config, PrintsATableInByteOrder) {
    auto const outcome = config(SmallDevice());
    EXPECT_EQ(outcome.out, "PATH             TYPE\n"
                           "B                T\n"
                           "sys/config       Config::Root\n"
                           "sys/config/name  Config::Name\n"
                           "\u00e9                T\n"
                           "\n"
                           "4 config paths\n");
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.status, 0);
}

TEST(Config, PrintsADocument) {
    Device device;
    device.preinit("P", "CONFIG:sys/name,Name\nsys/clock,Clock\nCONFIG:sys/banner,Banner\n");
    auto const outcome = config(device, {"--format", "json"});
    EXPECT_EQ(outcome.out, R"({
  "paths": [
    {
      "path": "sys/banner",
      "type": "Banner"
    },
    {
      "path": "sys/name",
      "type": "Name"
    }
  ]
}
)");
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.status, 0);
}

TEST(Config, OfADeviceWithoutAnyIsEmpty) {
    Device device;
    device.preinit("P", "sys/clock,Clock\n");
    EXPECT_EQ(config(device).out, "PATH  TYPE\n\n0 config paths\n");
    EXPECT_EQ(config(device, {"--format", "json"}).json(), Json::parse(R"({"paths": []})"));
}

TEST(Config, CountsOnePathAsOne) {
    Device device;
    device.preinit("P", "CONFIG:a,T\n");
    EXPECT_TRUE(config(device).out.ends_with("\n1 config path\n"));
}

TEST(Config, NamesThePathsThatPreinitMarks) {
    SmallDevice const device;
    auto const preinit = KeldaProgram()
                             .run({"preinit", "--format", "json", "--preinit", device.preinitDir()})
                             .json();
    auto paths = Json::array();
    for (auto const& path : preinit["paths"])
        if (path["config"])
            paths.push_back({{"path", path["path"]}, {"type", path["type"]}});
    EXPECT_EQ(config(device, {"--format", "json"}).json()["paths"], paths);
}

TEST(Config, AFaultIsToldAsEverywhere) {
    Device device;
    device.preinit("P", "CONFIG:a,T\n").preinit("Q", "nonsense\n");
    EXPECT_EQ(config(device).err, "Q:1: preinit syntax error: nonsense\n");
    EXPECT_EQ(config(device).status, 1);
    auto const document = config(device, {"--format", "json"});
    EXPECT_EQ(document.json(), Json::parse(R"({"error": {
        "file": "Q", "line": 1, "message": "preinit syntax error: nonsense"}})"));
    EXPECT_EQ(document.status, 1);
}

TEST(Config, ReadsNoProfile) {
    Device device;
    Device extra;
    device.preinit("P", "CONFIG:a,T\n");
    extra.profile("Broken", "agentName:\nno such keyword\n");
    auto const outcome = KeldaProgram()
                             .with("KELDA_EXTRA_PROFILE_PATH", extra.profileDir())
                             .run({"config", "--preinit", device.preinitDir()});
    EXPECT_EQ(outcome.status, 0);
}

TEST(Config, TheDefaultFolderIsTheSystems) {
    auto const byDefault = KeldaProgram().run({"config", "--format", "json"});
    auto const named =
        KeldaProgram().run({"config", "--format", "json", "--preinit", "/usr/lib64/preinit"});
    EXPECT_EQ(byDefault.out, named.out);
    EXPECT_EQ(byDefault.status, named.status);
}

} // namespace
