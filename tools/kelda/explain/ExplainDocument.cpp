#include "explain/ExplainDocument.h"

namespace KeldaTool {
namespace {

using namespace KeldaDatabase;

template <class List, class Make>
Json arrayOf(List const& list, Make const& make) {
    auto array = Json::array();
    for (auto const& element : list)
        array.push_back(make(element));
    return array;
}

// Null for a place that is not known.
Json placeJson(StoryPlace const& place) {
    if (!place.isKnown())
        return nullptr;
    return {{"file", jsonText(place.file)},
            {"line", place.line},
            {"text", jsonText(place.text)},
            {"includedFrom", arrayOf(place.from, [](StoryPlace::Line const& by) {
                 return Json{{"file", jsonText(by.file)}, {"line", by.line}};
             })}};
}

Json declarationJson(StoryDeclaration const& line) {
    return {{"place", placeJson(line.place)},
            {"path", jsonText(line.path)},
            {"type", jsonText(line.type)},
            {"attribute", line.attribute},
            {"config", line.isConfig}};
}

Json declaredJson(DeclaredPath const& path) {
    return {{"path", jsonText(path.path)},
            {"type", jsonText(path.type)},
            {"config", path.isConfig},
            {"lines", arrayOf(path.lines, declarationJson)},
            {"directoryBecauseOf",
             path.directoryBecauseOf ? declarationJson(*path.directoryBecauseOf) : Json()}};
}

char const* originName(StoryAlias::Origin origin) {
    switch (origin) {
    case StoryAlias::Origin::everyProfile:
        return "every-profile";
    case StoryAlias::Origin::agentString:
        return "agent-string";
    case StoryAlias::Origin::token:
        return "token";
    case StoryAlias::Origin::aliasLine:
        return "alias";
    case StoryAlias::Origin::undefined:
        break;
    }
    return "undefined";
}

Json aliasJson(StoryAlias const& alias) {
    return {{"name", jsonText(alias.name)},
            {"value", jsonText(alias.value)},
            {"origin", originName(alias.origin)},
            {"expression", jsonText(alias.expression)},
            {"place", placeJson(alias.place)}};
}

Json groupJson(StoryLine const& line) {
    return {{"name", jsonText(line.group)},
            {"priority", line.groupPriority == 0 ? Json() : Json(line.groupPriority)},
            {"place", placeJson(line.groupPlace)}};
}

Json lineJson(StoryLine const& line) {
    return {{"place", placeJson(line.place)},
            {"writtenPath", jsonText(line.writtenPath)},
            {"aliases", arrayOf(line.aliases, aliasJson)},
            {"flags", jsonText(line.flags)},
            {"flagsAfter", jsonText(line.flagsAfter)},
            {"group", groupJson(line)},
            {"conditional", line.isConditional},
            {"condition", placeJson(line.conditionPlace)},
            {"otherType", jsonText(line.otherType)}};
}

Json directoryJson(StoryDirectory const& directory) {
    return {
        {"below",
         arrayOf(directory.below,
                 [](StoryDirectory::Below const& mount) {
                     return Json{{"path", jsonText(mount.path)}, {"flags", jsonText(mount.flags)}};
                 })},
        {"before", jsonText(directory.before)},
        {"after", jsonText(directory.after)}};
}

Json inheritanceJson(StoryInheritance const& inherited) {
    return {{"parent", inherited.parent.empty() ? Json() : jsonText(inherited.parent)},
            {"parentFlags", jsonText(inherited.parentFlags)},
            {"before", jsonText(inherited.before)},
            {"after", jsonText(inherited.after)}};
}

Json mountJson(StoryMount const& mount) {
    return {{"path", jsonText(mount.path)},
            {"type", jsonText(mount.type)},
            {"flags", jsonText(mount.flags)},
            {"explicit", mount.isExplicit},
            {"lines", arrayOf(mount.lines, lineJson)},
            {"directory", mount.directory ? directoryJson(*mount.directory) : Json()},
            {"inherited", mount.inherited ? inheritanceJson(*mount.inherited) : Json()}};
}

Json agentJson(StoryAgent const& agent) {
    return {{"names", jsonTexts(agent.names)},
            {"activeMount", agent.hasActiveMounts},
            {"mounts", arrayOf(agent.mounts, mountJson)}};
}

Json nearJson(NearLine const& line) {
    return {{"reason", nameOf(line.reason)},
            {"family", line.isPreinit ? "preinit" : "profile"},
            {"place", placeJson(line.place)},
            {"path", jsonText(line.path)},
            {"flags", jsonText(line.flags)},
            {"detail", jsonText(line.detail)},
            {"agents", jsonTexts(line.agents)},
            {"cause", line.cause ? placeJson(*line.cause) : Json()},
            {"aliases", arrayOf(line.aliases, aliasJson)}};
}

Json faultJson(StoryFault const& fault) {
    return {{"place", placeJson(fault.place)}, {"message", jsonText(fault.message)}};
}

} // namespace

Json explainDocument(ExplainAnswer const& answer) {
    auto const& agent = answer.question.agent;
    return {{"schemaVersion", 1},
            {"path", jsonText(answer.question.path)},
            {"agent", agent.empty() ? Json() : jsonText(agent)},
            {"foundMountProfile", agent.empty() ? Json() : Json(answer.foundMountProfile)},
            {"declarations", arrayOf(answer.declarations, declaredJson)},
            {"agents", arrayOf(answer.agents, agentJson)},
            {"near", arrayOf(answer.near, nearJson)},
            {"nearAgents", jsonTexts(answer.nearAgents)},
            {"faults", arrayOf(answer.faults, faultJson)}};
}

} // namespace KeldaTool
