// kelda explain: say where a mount comes from.
#pragma once

#include "Command.h"
#include "DeviceOptions.h"

namespace KeldaTool {

class ExplainCommand : public Command {
  public:
    CLI::App& addTo(CLI::App& program) override;
    Report run(bool colour) const override;

  private:
    DeviceOptions device_;
};

} // namespace KeldaTool
