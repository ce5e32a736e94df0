// kelda who: which agents mount a path.
#pragma once

#include "Command.h"
#include "DeviceOptions.h"
#include "LoadOptions.h"
#include "who/WhoAnswer.h"

namespace KeldaTool {

class WhoCommand : public Command {
  public:
    CLI::App& addTo(CLI::App& program) override;
    Report run(bool colour) const override;

  private:
    DeviceOptions device_;
    WhoQuestion question_;
    Format format_ = Format::table;
};

} // namespace KeldaTool
