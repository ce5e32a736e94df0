// Which rules a check is about.
#pragma once

#include <string>
#include <vector>

#include "database/findings/Rules.h"

namespace CLI {
class App;
}

namespace KeldaTool {

class CheckSelection {
  public:
    /// Adds --select and --ignore.
    void addTo(CLI::App& command);

    bool holds(KeldaDatabase::RuleId rule) const;

  private:
    std::vector<std::string> selected_; ///< empty for all
    std::vector<std::string> ignored_;
};

} // namespace KeldaTool
