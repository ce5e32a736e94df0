// What an agent's own parser knows of a device, in the words of the side of the database.
#pragma once

#include <algorithm>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <Fen/Exception.h>
#include <KeldaBase/AgentMountFileInfoWrap.h>
#include <fmt/format.h>

#include "JsonDocument.h"
#include "mounts/MountsAnswer.h"
#include "mounts/MountsDocument.h"
#include "support/ComparedDevices.h"
#include "support/DatabaseAgreement.h"

namespace support {

// The path with "*" for each segment that is one of the names.
inline std::string withAnyName(std::string const& path, KeldaTool::Json const& names) {
    std::vector<std::string> segments;
    std::istringstream stream(path);
    for (std::string each; std::getline(stream, each, '/');)
        segments.push_back(std::find(names.begin(), names.end(), each) == names.end() ? each : "*");
    return fmt::format("{}", fmt::join(segments, "/"));
}

// Where there are sub-agents, %agentString stands for each of them and not for the agent. The side
// of the database knows of "*" only.
inline KeldaTool::Json withAnyAgentString(KeldaTool::Json document) {
    auto const subAgents = document.at("subAgents");
    if (subAgents.empty())
        return document;
    for (auto& mount : document.at("mounts"))
        mount["path"] = withAnyName(mount.at("path"), subAgents);
    for (auto& paths : document.at("groups"))
        for (auto& path : paths)
            path = withAnyName(path, subAgents);
    return document;
}

// The message of a fault, alike.
inline std::string messageOf(Kelda::MfiException const& fault, FiledDevice& device) {
    std::string message(fault.msg.view());
    for (auto const& keyword : device.parser().device().keywords)
        if (keyword.keyword == "subAgent:")
            message =
                replaced(std::move(message),
                         fmt::format("/{}'", keyword.line.substr(keyword.keyword.size())), "/*'");
    return message;
}

// The document of `kelda mounts AGENT --format json`, or the message of a fault. Each token of the
// agent's name has its own name for a value, and %agentString is "*".
inline KeldaTool::Json documentOf(FiledDevice& device, std::string const& agent) {
    auto const entity = Kelda::agentMountFileInfoWrapFactory(false, agent, "*", device.preinitDir(),
                                                             device.profileDir(), true);
    try {
        return withAnyAgentString(mountsDocument(KeldaTool::askMounts(*entity, agent, {}), {}));
    } catch (Fen::AgentException const&) {
        return {{"error", messageOf(entity->mountFileInfoPtr()->exceptions().front(), device)}};
    }
}

} // namespace support
