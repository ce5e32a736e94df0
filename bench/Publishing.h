// What is measured of the published entity: a load through it, and the questions that it answers
// with whole collections.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

#include <KeldaBase/AgentMountFileInfoWrap.h>

#include "Loads.h"

namespace bench {

using Wrap = Rook::Ptr<Kelda::AgentMountFileInfoWrap>;

// The entity of an agent, loaded and with nothing published yet.
Wrap loadWrap(Directories const& directories, std::string const& agentString);

struct Published {
    Rook::Ptr<Rook::Node> collection;
    std::size_t paths = 0;
};

// A question about an agent whose profile file has the agent's name.
struct PublishQuestion {
    std::string_view operation;
    Published (*ask)(Kelda::AgentMountFileInfoWrap& wrap, std::string const& agentString);
};

extern std::array<PublishQuestion const, 3> const publishQuestions;

// What is wrong with the answers, compared with the parser's own; empty when nothing is.
std::string differenceInPublishing(Directories const& directories, std::string const& agentString);

} // namespace bench
