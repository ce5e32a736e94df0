#include "explain/ExplainAnswer.h"

#include "FaultNote.h"
#include "UnreadableFolder.h"
#include "database/paths/PathDeclarations.h"

namespace KeldaTool {
namespace {

using namespace KeldaDatabase;

AgentStory takeStory(DeviceOptions const& options, AskedPath const& asked, PlaceReader& places,
                     ExplainAnswer& answer) {
    auto story = agentStory(options.preinitDir(), options.profileDir(), answer.question.agent,
                            asked, places);
    if (!story.agent.mounts.empty())
        answer.agents.push_back(story.agent);
    answer.foundMountProfile = story.foundMountProfile;
    answer.faults = story.faults;
    return story;
}

} // namespace

ExplainAnswer askExplain(DeviceOptions const& options, ExplainQuestion const& question) {
    ExplainAnswer answer;
    answer.question = question;
    auto const parser = options.parser();
    auto const& device = parser->device();
    answer.unreadable = unreadableFolder(device).value_or("");
    if (!answer.unreadable.empty())
        return answer;
    answer.note = faultNote(*parser);
    AskedPath const asked(question.path);
    PlaceReader places(device);
    DeviceLines lines(device, parser->predefinedAliases(), places);
    answer.declarations = declarationsOf(device, asked, places);
    NearQuestion near{asked, !answer.declarations.empty(), nullptr, nullptr};
    if (question.agent.empty()) {
        answer.agents = agentsThatMount(device, asked, lines);
        answer.near = nearLines(device, near, lines, places);
        return answer;
    }
    auto const story = takeStory(options, asked, places, answer);
    near.agent = &question.agent;
    near.story = &story;
    answer.near = nearLines(device, near, lines, places);
    if (!answer.foundMountProfile)
        answer.nearAgents = nearAgents(device, question.agent);
    return answer;
}

} // namespace KeldaTool
