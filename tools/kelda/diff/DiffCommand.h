// kelda diff
#pragma once

#include "Command.h"

namespace KeldaTool {

class DiffCommand : public Command {
  public:
    CLI::App& addTo(CLI::App& program) override;
    Report run(bool colour) const override;
};

} // namespace KeldaTool
