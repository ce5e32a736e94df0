// kelda explain: say where a mount comes from.
#pragma once

#include <string>

#include "Command.h"
#include "DeviceOptions.h"
#include "LoadOptions.h"
#include "explain/ExplainAnswer.h"

namespace KeldaTool {

class ExplainCommand : public Command {
  public:
    CLI::App& addTo(CLI::App& program) override;
    Report run(bool colour) const override;

  private:
    Report explainPath() const;

    ExplainQuestion question_;
    std::string rule_;
    Format format_ = Format::table;
    DeviceOptions device_;
};

} // namespace KeldaTool
