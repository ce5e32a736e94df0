// kelda mounts: what the mount profiles give one agent.
#pragma once

#include <string>

#include "Command.h"
#include "LoadOptions.h"
#include "mounts/MountsSelection.h"

namespace KeldaTool {

class MountsCommand : public Command {
  public:
    CLI::App& addTo(CLI::App& program) override;
    Report run(bool colour) const override;

  private:
    std::string agent_;
    std::string override_;
    std::string preinitDir_;
    std::string profileDir_;
    MountsSelection selection_;
    Format format_ = Format::table;
};

} // namespace KeldaTool
