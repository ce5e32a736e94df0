// An agent-side parser that shows what it keeps to itself.
#pragma once

#include <KeldaBase/AgentMountFileInfo.h>

#include "Device.h"

namespace support {

class OpenAgent : public Kelda::AgentMountFileInfo {
  public:
    explicit OpenAgent(Device const& device)
        : AgentMountFileInfo(false, device.preinitDir(), device.profileDir(), true,
                             "DefaultMountGroup") {}
    ~OpenAgent() override = default;

    using AgentMountFileInfo::agentStringsWithoutProfile_;
    using AgentMountFileInfo::allProfilesLoaded_;
    using AgentMountFileInfo::conditionSeen_;
    using AgentMountFileInfo::connectionFlags_;
    using AgentMountFileInfo::currentFiles_;
    using AgentMountFileInfo::currentMountGroup_;
    using AgentMountFileInfo::foundMountProfile_;
    using AgentMountFileInfo::inConditionalGroup_;
    using AgentMountFileInfo::intermediatePaths_;
    using AgentMountFileInfo::noDefaultMountGroup_;
    using AgentMountFileInfo::overrideAgentStrings_;
    using AgentMountFileInfo::pathConfigInfoMap_;
    using AgentMountFileInfo::rootFlags_;
    using AgentMountFileInfo::savedRMAs_;
    using AgentMountFileInfo::subAgents_;
};

} // namespace support
