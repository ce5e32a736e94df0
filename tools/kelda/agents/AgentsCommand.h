// kelda agents: the agents that the profiles name.
#pragma once

#include "Command.h"
#include "DeviceOptions.h"
#include "LoadOptions.h"

namespace KeldaTool {

class AgentsCommand : public Command {
  public:
    CLI::App& addTo(CLI::App& program) override;
    Report run(bool colour) const override;

  private:
    DeviceOptions device_;
    Format format_ = Format::table;
};

} // namespace KeldaTool
