// A device in a temporary directory, and what is told about one of its paths.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "database/DatabaseMountFileInfo.h"
#include "database/paths/NearMounts.h"
#include "database/paths/PathDeclarations.h"
#include "support/CleanEnvironment.h"
#include "support/Device.h"

namespace support {

class ExplainedDevice : public Device {
  public:
    KeldaDatabase::Device const& device() {
        if (!parser_)
            parser_ =
                std::make_unique<KeldaDatabase::DatabaseMountFileInfo>(preinitDir(), profileDir());
        return parser_->device();
    }
    std::vector<KeldaDatabase::DeclaredPath> declarations(std::string const& path) {
        KeldaDatabase::PlaceReader places(device());
        return declarationsOf(device(), KeldaDatabase::AskedPath(path), places);
    }
    std::vector<KeldaDatabase::StoryAgent> agents(std::string const& path) {
        KeldaDatabase::PlaceReader places(device());
        KeldaDatabase::DeviceLines lines(device(), parser_->predefinedAliases(), places);
        return agentsThatMount(device(), KeldaDatabase::AskedPath(path), lines);
    }
    KeldaDatabase::AgentStory story(std::string const& path, std::string const& agent) {
        KeldaDatabase::PlaceReader places(device());
        return agentStory(preinitDir(), profileDir(), agent, KeldaDatabase::AskedPath(path),
                          places);
    }
    // The lines that come close, as "REASON FILE:LINE".
    std::vector<std::string> near(std::string const& path, std::string const& agent = "") {
        std::vector<std::string> shown;
        for (auto const& line : nearLines(path, agent))
            shown.push_back(std::string(nameOf(line.reason)) + " " + this->shown(line.place));
        return shown;
    }
    std::vector<KeldaDatabase::NearLine> nearLines(std::string const& path,
                                                   std::string const& agent = "") {
        KeldaDatabase::PlaceReader places(device());
        KeldaDatabase::DeviceLines lines(device(), parser_->predefinedAliases(), places);
        KeldaDatabase::AskedPath const asked(path);
        auto const story = this->story(path, agent);
        KeldaDatabase::NearQuestion question{asked, !declarations(path).empty(), nullptr, nullptr};
        if (!agent.empty()) {
            question.agent = &agent;
            question.story = &story;
        }
        return KeldaDatabase::nearLines(device(), question, lines, places);
    }

    // "FILE:LINE", the file below the directory.
    std::string shown(KeldaDatabase::StoryPlace const& place) const {
        auto const start = directory().string().size() + 1;
        return place.file.substr(start) + ":" + std::to_string(place.line);
    }

  private:
    CleanEnvironment environment_;
    std::unique_ptr<KeldaDatabase::DatabaseMountFileInfo> parser_;
};

// "PATH TYPE FLAGS" of each mount.
inline std::vector<std::string> shown(std::vector<KeldaDatabase::StoryMount> const& mounts) {
    std::vector<std::string> texts;
    for (auto const& mount : mounts)
        texts.push_back(mount.path + " " + mount.type + " " + mount.flags);
    return texts;
}

} // namespace support
