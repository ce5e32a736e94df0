// The files that a check was asked about, among those of the device.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "database/Device.h"

namespace KeldaTool {

class CheckedFiles {
  public:
    /// The files as the call names them; none means every file.
    explicit CheckedFiles(std::vector<std::string> names) : names_(std::move(names)) {}

    /// Why one of them cannot be looked at: it cannot be opened, or the device does not read it.
    std::optional<std::string> problem(KeldaDatabase::Device const& device);

    /// Whether findings in a file of the device are asked for; after problem().
    bool hold(KeldaDatabase::FileId file) const;

  private:
    std::vector<std::string> names_;
    std::vector<bool> wanted_; // by file
};

} // namespace KeldaTool
