// One mount of an agent.
#pragma once

#include <string>

namespace KeldaTool {

struct Mount {
    std::string path;
    std::string type;
    std::string flags;
    bool isExplicit = false;
};

} // namespace KeldaTool
