// kelda tree: the tree of paths.
#pragma once

#include <cstddef>
#include <string>

#include "Command.h"
#include "DeviceOptions.h"
#include "LoadOptions.h"

namespace KeldaTool {

class TreeCommand : public Command {
  public:
    CLI::App& addTo(CLI::App& program) override;
    Report run(bool colour) const override;

  private:
    std::string prefix_;
    std::size_t depth_ = 0;
    DeviceOptions device_;
    Format format_ = Format::table;
};

} // namespace KeldaTool
