// kelda who: which agents mount a path, of a device or of many.
#pragma once

#include <string>

#include "Command.h"
#include "DeviceOptions.h"
#include "devices/DeviceBatch.h"
#include "who/WhoAnswer.h"

namespace KeldaTool {

class WhoCommand : public Command {
  public:
    CLI::App& addTo(CLI::App& program) override;
    Report run(bool colour) const override;

  private:
    Report askDevice(bool colour) const;
    Report askEachDevice(bool colour) const;

    DeviceOptions device_;
    BatchOptions batch_;
    WhoQuestion question_;
    std::string format_ = "table";
};

} // namespace KeldaTool
