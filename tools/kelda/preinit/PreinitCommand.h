// kelda preinit: what the preinit files declare.
#pragma once

#include <string>

#include "Command.h"
#include "LoadOptions.h"

namespace KeldaTool {

class PreinitCommand : public Command {
  public:
    CLI::App& addTo(CLI::App& program) override;
    Report run(bool colour) const override;

  private:
    std::string preinitDir_;
    Format format_ = Format::table;
};

} // namespace KeldaTool
