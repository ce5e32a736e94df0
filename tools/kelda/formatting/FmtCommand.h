// kelda fmt: the canonical layout of files.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Command.h"
#include "DeviceOptions.h"
#include "formatting/FileFormatting.h"

namespace KeldaTool {

class FmtCommand : public Command {
  public:
    CLI::App& addTo(CLI::App& program) override;
    Report run(bool colour) const override;

  private:
    class Work;
    std::vector<FamilyFolder> folders() const;
    Report formatInput() const;

    std::vector<std::string> files_;
    std::optional<KeldaDatabase::FileFamily> family_;
    bool check_ = false;
    bool diff_ = false;
    DeviceOptions device_;
    CLI::App const* options_ = nullptr;
};

} // namespace KeldaTool
