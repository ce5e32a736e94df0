// kelda completion: scripts that make a shell complete the program's words.
#pragma once

#include <string>

#include "Command.h"

namespace KeldaTool {

class CompletionCommand : public Command {
  public:
    CLI::App& addTo(CLI::App& program) override;
    Report run(bool colour) const override;

  private:
    CLI::App const* program_ = nullptr;
    std::string shell_;
};

} // namespace KeldaTool
