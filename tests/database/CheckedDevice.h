// A device in a temporary directory, and what the checks beyond loading find in it, as text.
#pragma once

#include <map>
#include <string>
#include <vector>

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "database/DatabaseMountFileInfo.h"
#include "database/checks/StaticChecks.h"
#include "support/CleanEnvironment.h"
#include "support/Device.h"

namespace support {

using Check = std::vector<KeldaDatabase::Finding>(KeldaDatabase::Device const&);
/// Texts by file, "preinit/P" or "profiles/A".
using FileTexts = std::map<std::string, std::string>;

class CheckedDevice {
  public:
    explicit CheckedDevice(FileTexts const& files) {
        for (auto const& [name, text] : files)
            device_.directory().write(name, text);
    }

    Device const& files() const { return device_; }

    KeldaDatabase::DatabaseMountFileInfo& parser() {
        if (!parser_)
            parser_ = std::make_unique<KeldaDatabase::DatabaseMountFileInfo>(device_.preinitDir(),
                                                                             device_.profileDir());
        return *parser_;
    }
    KeldaDatabase::Device const& loaded() { return parser().device(); }

    /// "profiles/A:3 the message", with what is related behind it: " [preinit/P:1 text]".
    std::vector<std::string> found(Check* check) {
        std::vector<std::string> texts;
        for (auto const& finding : check(loaded())) {
            EXPECT_EQ(finding.severity, KeldaDatabase::ruleOf(finding.rule).severity);
            texts.push_back(shown(finding.place) + " " + finding.message);
            for (auto const& related : finding.related)
                texts.back() += fmt::format(" [{} {}]", shown(related.place), related.text);
        }
        return texts;
    }

    /// The file and line of a place, "profiles/A:3".
    std::string shown(KeldaDatabase::Place const& place) {
        if (!place.isKnown())
            return "nowhere";
        auto const path = loaded().pathOf(place);
        return fmt::format("{}:{}", path.substr(device_.directory().string().size() + 1),
                           place.line);
    }

  private:
    CleanEnvironment environment_;
    Device device_;
    std::unique_ptr<KeldaDatabase::DatabaseMountFileInfo> parser_;
};

/// A device, and what a check is to find in it.
struct CheckCase {
    char const* what;
    FileTexts files;
    std::vector<std::string> findings;
};

inline void expectFindings(Check* check, std::vector<CheckCase> const& cases) {
    for (auto const& each : cases)
        EXPECT_THAT(CheckedDevice(each.files).found(check),
                    testing::ElementsAreArray(each.findings))
            << each.what;
}

} // namespace support
