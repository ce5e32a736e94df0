// A small device in which something is planted, and what is to be found.
#pragma once

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/ComparedDevices.h"

namespace support {

// Two families of agents, one of them with active mounts, and two agents without tokens; one of
// those refuses the default group.
inline FileTexts const plantedDevice = {
    {"preinit/Paths", "sys/clock,Clock\n"
                      "sys/log,Log\n"
                      "fan/%slot/speed,Speed,createOnMount\n"
                      "fan/%slot/state,State,createOnMount\n"
                      "port/%side,Port,createOnMount\n"
                      "CONFIG:conf/name,Name\n"
                      "spare/one,One\n"},
    {"profiles/Fan", "agentName: Fan-%slot\n"
                     "fan/%slot/speed,Speed,rw\n"
                     "MountGroup: slow, 10\n"
                     "fan/%slot/state,State,r\n"
                     "Include: shared\n"},
    {"profiles/Led", "agentName: Led\n"
                     "alias: %root = left\n"
                     "port/%root,Port,r\n"
                     "Include: shared\n"},
    {"profiles/Quiet", "agentName: Quiet\n"
                       "noDefaultMountGroup\n"
                       "sys/log,Log,r\n"},
    {"profiles/Table", "agentName: Table-%name\n"
                       "activeMount\n"
                       "rootFlags: rw\n"
                       "fan/%name/state,State,rw\n"},
    {"profiles/shared", "sys/log,Log,w\n"},
    {"profiles/DefaultMountGroup", "sys/clock,Clock,r\n"},
};

// An edit, and the changes that it is to be found as.
struct Planted {
    char const* what;
    std::vector<FileEdit> edits;
    std::vector<std::string> changes;
};

inline void expectFound(FileTexts const& files, std::vector<Planted> const& plants) {
    for (auto const& planted : plants)
        EXPECT_THAT(ComparedDevices(files, edited(files, planted.edits)).changes(),
                    testing::ElementsAreArray(planted.changes))
            << planted.what;
}

} // namespace support
