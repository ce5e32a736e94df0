// kelda report: a web page about a device.
#pragma once

#include <string>

#include "Command.h"
#include "DeviceOptions.h"

namespace KeldaTool {

class ReportCommand : public Command {
  public:
    CLI::App& addTo(CLI::App& program) override;
    Report run(bool colour) const override;

  private:
    Report write(std::string const& page, std::string const& totals) const;

    DeviceOptions device_;
    std::string output_;
    std::string title_ = "Device report";
};

} // namespace KeldaTool
