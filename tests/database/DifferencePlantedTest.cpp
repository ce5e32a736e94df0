// What is planted in the files of a device is found: named, classed, with its cause, its lines, its
// paths and its agents, and nothing else.
#include <string>
#include <vector>

#include "PlantedDevice.h"

namespace {

using support::expectFound;
using support::FileTexts;
auto const& base = support::plantedDevice;

TEST(PlantedMount, IsFoundAtItsLine) {
    expectFound(
        base,
        {{"a mount that reads",
          {{"profiles/Quiet", "sys/log,Log,r\n", "sys/log,Log,r\nspare/one,One,r\n"}},
          {"mount-added notable by line: '' -> 'r', - => profiles/Quiet:4: spare/one [Quiet]"}},
         {"a mount that writes",
          {{"profiles/Fan", "rw\n", "rw\nspare/one,One,w\n"}},
          {"mount-added risky by line: '' -> 'w', - => profiles/Fan:3: spare/one [Fan-%slot]"}},
         {"a mount is gone",
          {{"profiles/Led", "port/%root,Port,r\n", ""}},
          {"mount-removed dangerous by line: 'r' -> '', profiles/Led:3 => -: port/left [Led]"}},
         {"a token in a path",
          {{"profiles/Fan", "fan/%slot/speed,Speed,rw\n", ""}},
          {"mount-removed dangerous by line: 'rw' -> '', profiles/Fan:2 => -: "
           "fan/%slot/speed [Fan-%slot]"}},
         {"two lines are two changes",
          {{"profiles/Quiet", "sys/log,Log,r\n", "spare/one,One,r\n"}},
          {"mount-removed dangerous by line: 'r' -> '', profiles/Quiet:3 => -: sys/log [Quiet]",
           "mount-added notable by line: '' -> 'r', - => profiles/Quiet:3: spare/one [Quiet]"}}});
}

TEST(PlantedFlags, AreFoundAtTheirLine) {
    expectFound(
        base,
        {{"the agent writes, too",
          {{"profiles/Led", "Port,r", "Port,rw"}},
          {"flags-widened risky by line: 'r' -> 'rw', profiles/Led:3 => profiles/Led:3: "
           "port/left [Led]"}},
         {"the agent only reads otherwise",
          {{"profiles/Led", "Port,r", "Port,ri"}},
          {"flags-widened notable by line: 'r' -> 'ri', profiles/Led:3 => profiles/Led:3: "
           "port/left [Led]"}},
         {"the agent does not write any more",
          {{"profiles/Fan", "rw\n", "r\n"}},
          {"flags-narrowed dangerous by line: 'rw' -> 'r', profiles/Fan:2 => profiles/Fan:2: "
           "fan/%slot/speed [Fan-%slot]"}},
         {"it writes and does not read",
          {{"profiles/Quiet", "Log,r", "Log,w"}},
          {"flags-replaced dangerous by line: 'r' -> 'w', profiles/Quiet:3 => profiles/Quiet:3: "
           "sys/log [Quiet]"}},
         {"a further line has further flags",
          {{"profiles/Quiet", "Log,r\n", "Log,r\nsys/log,Log,w\n"}},
          {"flags-widened risky by line: 'r' -> 'rw', - => profiles/Quiet:4: sys/log [Quiet]"}}});
}

TEST(PlantedKeyword, IsFoundAtItsLine) {
    expectFound(
        base,
        {{"root flags",
          {{"profiles/Led", "alias", "rootFlags: rw\nalias"}},
          {"root-flags-changed risky by keyword: 'rtp' -> 'rwtp', - => profiles/Led:2: [Led]"}},
         {"other root flags",
          {{"profiles/Table", "rootFlags: rw", "rootFlags: rwS"}},
          {"root-flags-changed risky by keyword: 'rwt' -> 'rwSt', profiles/Table:3 => "
           "profiles/Table:3: [Table-%name]"}},
         {"connection flags",
          {{"profiles/Fan", "Include", "connectionFlags: SN\nInclude"}},
          {"connection-flags-changed risky by keyword: '' -> 'SN', - => profiles/Fan:5: "
           "[Fan-%slot]"}},
         {"a sub-agent",
          {{"profiles/Led", "alias", "subAgent: Led-two\nalias"}},
          {"sub-agents-changed risky by keyword: '' -> 'Led-two', - => profiles/Led:2: [Led]"}},
         {"no default group any more",
          {{"profiles/Led", "alias", "noDefaultMountGroup\nalias"}},
          {"mount-removed dangerous by keyword: 'r' -> '', - => profiles/Led:2: sys/clock [Led]",
           "no-default-mount-group-changed notable by keyword: 'no' -> 'yes', - => "
           "profiles/Led:2: [Led]"}}});
}

TEST(PlantedGroup, IsFoundAtItsLine) {
    expectFound(
        base,
        {{"a path in a further group",
          {{"profiles/Fan", "shared\n",
            "shared\nMountGroup: fast\n"
            "fan/%slot/speed,Speed,rw\n"}},
          {"group-added notable by line: '' -> 'fast', - => profiles/Fan:7: fan/%slot/speed "
           "[Fan-%slot]"}},
         {"a group with another name",
          {{"profiles/Fan", "slow", "late"}},
          {"group-added notable by keyword: '' -> 'late', profiles/Fan:3 => profiles/Fan:3: "
           "fan/%slot/state [Fan-%slot], sys/log [Fan-%slot]",
           "group-removed notable by keyword: 'slow' -> '', profiles/Fan:3 => profiles/Fan:3: "
           "fan/%slot/state [Fan-%slot], sys/log [Fan-%slot]"}},
         {"a priority",
          {{"profiles/Fan", "slow, 10", "slow, 20"}},
          {"group-priority-changed notable by keyword: '10' -> '20', profiles/Fan:3 => "
           "profiles/Fan:3: fan/%slot/state [Fan-%slot], sys/log [Fan-%slot]"}},
         {"a condition",
          {{"profiles/Fan", "slow, 10\n", "slow, 10\nCondition: it is cold\n"}},
          {"condition-changed risky by keyword: '' -> 'Condition: it is cold', - => "
           "profiles/Fan:4: fan/%slot/state [Fan-%slot], sys/log [Fan-%slot]"}}});
}

TEST(PlantedPreinitLine, IsFoundAtItsLine) {
    expectFound(
        base,
        {{"a path that nobody mounts",
          {{"preinit/Paths", "spare/one,One\n", "spare/one,One\nspare/two,Two\n"}},
          {"preinit-added harmless by line: '' -> 'Two', - => preinit/Paths:8: spare/two []"}},
         {"it is gone",
          {{"preinit/Paths", "spare/one,One\n", ""}},
          {"preinit-removed risky by line: 'One' -> '', preinit/Paths:7 => -: spare/one []"}},
         {"an attribute",
          {{"preinit/Paths", "spare/one,One", "spare/one,One,createOnStandby"}},
          {"preinit-attribute-changed risky by line: '' -> 'createOnStandby', preinit/Paths:7 => "
           "preinit/Paths:7: spare/one []"}},
         {"a config path",
          {{"preinit/Paths", "CONFIG:conf/name", "conf/name"}},
          {"preinit-config-changed risky by line: 'yes' -> 'no', preinit/Paths:6 => "
           "preinit/Paths:6: conf/name []"}},
         {"another type of a path that agents mount",
          {{"preinit/Paths", "log,Log", "log,Text"}},
          {"type-changed dangerous by preinit: 'Log' -> 'Text', preinit/Paths:2 => "
           "preinit/Paths:2: sys/log [Fan-%slot Led Quiet]",
           "preinit-type-changed dangerous by line: 'Log' -> 'Text', preinit/Paths:2 => "
           "preinit/Paths:2: sys/log []"}}});
}

TEST(PlantedAgent, IsFoundAtItsName) {
    expectFound(
        base,
        {{"an agent that only reads",
          {{"profiles/New", "", "# New\nagentName: New\nnoDefaultMountGroup\nsys/log,Log,r\n"}},
          {"agent-added notable by file: '' -> '', - => profiles/New:2: [New]"}},
         {"an agent that writes",
          {{"profiles/New", "", "agentName: New-%a\nsys/log,Log,w\n"}},
          {"agent-added risky by file: '' -> '', - => profiles/New:1: [New-%a]"}},
         {"an agent is gone",
          {{"profiles/Quiet", "", ""}},
          {"agent-removed dangerous by file: '' -> '', profiles/Quiet:1 => -: [Quiet]"}},
         {"an agent has another name",
          {{"profiles/Quiet", "agentName: Quiet", "agentName: Silent"}},
          {"agent-removed dangerous by agent-name: '' -> '', profiles/Quiet:1 => "
           "profiles/Quiet:1: [Quiet]",
           "agent-added notable by agent-name: '' -> '', profiles/Quiet:1 => "
           "profiles/Quiet:1: [Silent]"}}});
}

TEST(PlantedFault, IsFoundWhereItIsMet) {
    expectFound(
        base,
        {{"a misspelt alias",
          {{"profiles/Led", "port/%root", "port/%rot"}},
          {"fault-added dangerous by line: '' -> 'No such alias defined: '%rot'', "
           "profiles/Led:3 => profiles/Led:3: [Led]"}},
         {"a path that three agents mount is not declared any more",
          {{"preinit/Paths", "sys/log,Log\n", ""}},
          {"fault-added dangerous by preinit: '' -> 'No type info for path 'sys/log' found in "
           "preinit files while loading profile file because the path was not loaded from any "
           "preinit...', preinit/Paths:2 => -: [Fan-%slot Led Quiet]",
           "preinit-removed risky by line: 'Log' -> '', preinit/Paths:2 => -: sys/log []"}}});
}

} // namespace
