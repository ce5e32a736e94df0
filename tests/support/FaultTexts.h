// The texts that a fault leaves behind: in the trace where parsing goes on, in the exception where
// it ends.
#pragma once

#include <string>

#include <Fen/Exception.h>
#include <KeldaBase/MountFileInfo.h>

namespace support {

// The message at level 0 that follows a fault.
inline std::string continuedTrace(Kelda::MfiException const& fault) {
    return "Encountered exception " +
           std::string(Kelda::MountFileInfo::mfiExceptionToString(fault).view()) +
           " during kelda-side parsing. Continuing...";
}

// A fault on a line of a profile, as an exception's text has it.
inline std::string faultIn(std::string const& file, int line, std::string const& message) {
    return "\n\t\t\tError in mount profile: " + file + "\n\t\t\tline: " + std::to_string(line) +
           "\n\t\t\tmsg: " + message;
}

// The text of the Fen::AgentException that the action throws.
template <class Action>
std::string thrownText(Action const& action) {
    try {
        action();
    } catch (Fen::AgentException const& exception) {
        return exception.what();
    }
    return "(nothing was thrown)";
}

} // namespace support
