// kelda graph: agents and the paths between them.
#pragma once

#include "Command.h"
#include "DeviceOptions.h"
#include "graph/PathGraph.h"

namespace KeldaTool {

class GraphCommand : public Command {
  public:
    CLI::App& addTo(CLI::App& program) override;
    Report run(bool colour) const override;

  private:
    enum class Drawing { dot, svg };

    DeviceOptions device_;
    GraphQuestion question_;
    Drawing drawing_ = Drawing::dot;
};

} // namespace KeldaTool
