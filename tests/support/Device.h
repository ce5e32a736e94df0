// A device in a temporary directory: preinit files, profiles and an agent-side parser over them.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include <KeldaBase/AgentMountFileInfo.h>

#include "LenientParser.h"
#include "TemporaryDirectory.h"

namespace support {

class Device {
  public:
    Device() {
        directory_.makeDirectory("preinit");
        directory_.makeDirectory("profiles");
    }

    Device& preinit(std::string_view name, std::string_view text) {
        directory_.write("preinit/" + std::string(name), text);
        return *this;
    }
    Device& profile(std::string_view name, std::string_view text) {
        directory_.write("profiles/" + std::string(name), text);
        return *this;
    }

    TemporaryDirectory const& directory() const { return directory_; }
    std::string preinitDir() const { return (directory_ / "preinit").string(); }
    std::string profileDir() const { return (directory_ / "profiles").string(); }

    // An agent-side parser with this agent string queued; nothing is loaded yet.
    std::unique_ptr<Kelda::AgentMountFileInfo> agent(std::string_view agentString,
                                                     std::string_view overrideString = "",
                                                     bool dontMergeFlags = false) const {
        auto parser = emptyAgent(dontMergeFlags);
        parser->addAgent(agentString, overrideString);
        return parser;
    }
    std::unique_ptr<Kelda::AgentMountFileInfo> emptyAgent(bool dontMergeFlags = false) const {
        return std::make_unique<Kelda::AgentMountFileInfo>(dontMergeFlags, preinitDir(),
                                                           profileDir(), true, "DefaultMountGroup");
    }
    // A lenient parser over all profiles; nothing is loaded yet.
    std::unique_ptr<LenientParser> lenient() const {
        return std::make_unique<LenientParser>(preinitDir(), profileDir());
    }

  private:
    TemporaryDirectory directory_;
};

} // namespace support
