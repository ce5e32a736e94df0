// What an agent's own parser says of a device, and what the side of the database says about the
// same agent: both in the form "FILE:LINE: MESSAGE" of the first fault.
#pragma once

#include <string>
#include <string_view>

#include <Fen/Exception.h>
#include <KeldaBase/AgentMountFileInfo.h>

#include "database/AgentFaults.h"
#include "database/DatabaseMountFileInfo.h"

namespace support {

struct FirstFault {
    std::string place = "no fault"; // "FILE:LINE"
    std::string message;
    bool isTogether = false;

    std::string text() const { return message.empty() ? place : place + ": " + message; }
};

inline FirstFault firstFaultOf(Kelda::MfiException const& fault) {
    return {std::string(fault.file.view()) + ":" + std::to_string(fault.line),
            std::string(fault.msg.view()), false};
}

// Loads an agent; the fault that its parser throws.
inline FirstFault faultThrownTo(std::string_view agentString, std::string_view overrideString,
                                std::string const& preinitDir, std::string const& profileDir) {
    Kelda::AgentMountFileInfo parser(false, preinitDir, profileDir, true, "DefaultMountGroup");
    parser.addAgent(agentString, overrideString);
    try {
        parser.doInit();
    } catch (Fen::AgentException const&) {
        return firstFaultOf(parser.exceptions().front());
    }
    return {};
}

// The first of the faults that concern an agent of the device.
inline FirstFault faultForeseen(KeldaDatabase::Device const& device, std::size_t agent) {
    auto const faults = KeldaDatabase::faultsOf(device, agent);
    if (faults.empty())
        return {};
    auto const& fault = device.faults[faults.front()];
    auto first = firstFaultOf(fault.exception);
    first.isTogether = fault.isTogether;
    return first;
}

inline std::string replaced(std::string text, std::string_view from, std::string_view to) {
    for (auto at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
    return text;
}

} // namespace support
