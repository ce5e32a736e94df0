#include "explain/ExplainLines.h"

#include <algorithm>

#include <fmt/format.h>

#include "Text.h"

namespace KeldaTool {
namespace {

using KeldaDatabase::NearLine;
using KeldaDatabase::StoryAlias;

std::string originText(StoryAlias const& alias) {
    switch (alias.origin) {
    case StoryAlias::Origin::everyProfile:
        return "which every profile knows";
    case StoryAlias::Origin::agentString:
        return "the agent string";
    case StoryAlias::Origin::token:
        return fmt::format("a token of the agent's name ({})", placeText(alias.place));
    case StoryAlias::Origin::aliasLine:
        return fmt::format("an alias for {} ({})", printable(alias.expression),
                           placeText(alias.place));
    case StoryAlias::Origin::undefined:
        break;
    }
    return "which nothing defines";
}

std::string valuesText(std::vector<StoryAlias> const& aliases) {
    std::string text;
    for (auto const& alias : aliases)
        text += (text.empty() ? "" : "; ") + aliasText(alias);
    return text;
}

std::string firstLine(std::string_view text) {
    return printable(text.substr(0, text.find('\n')));
}

std::string reasonText(NearLine const& line) {
    auto const path = printable(line.path);
    switch (line.reason) {
    case NearLine::Reason::refused:
        return "is refused: " + firstLine(line.detail);
    case NearLine::Reason::notRead:
        return fmt::format("is in a file that {} reads: {}", line.isPreinit ? "nobody" : "no agent",
                           line.detail);
    case NearLine::Reason::otherSlashes:
        return fmt::format("has other slashes: {}", path);
    case NearLine::Reason::otherCase:
        return fmt::format("has letters in another case: {}", path);
    case NearLine::Reason::mistyped:
        return fmt::format("spells a name otherwise: {}", path);
    case NearLine::Reason::otherValue:
        return fmt::format("stands for {}: {}", path, valuesText(line.aliases));
    case NearLine::Reason::otherAgent:
        return fmt::format("is for {}", listText(line.agents));
    case NearLine::Reason::notForVariants:
        return "is in a profile that does not say matchActiveName, which an \"-Active-\" agent "
               "therefore passes over";
    case NearLine::Reason::noDefaultGroup:
        break;
    }
    return fmt::format("is not for {}, which {} noDefaultMountGroup ({})", listText(line.agents),
                       line.agents.size() == 1 ? "says" : "say", placeText(*line.cause));
}

} // namespace

std::string placeText(KeldaDatabase::StoryPlace const& place) {
    auto text = fmt::format("{}:{}", printable(place.file), place.line);
    for (auto const& by : place.from)
        text += fmt::format(", included from {}:{}", printable(by.file), by.line);
    return text;
}

std::string shownFlags(std::string_view flags) {
    return flags.empty() ? "no flags" : printable(flags);
}

std::string listText(std::vector<std::string> const& names) {
    constexpr std::size_t most = 8;
    // Nobody is spared a single name.
    auto const shown = names.size() > most + 1 ? most : names.size();
    std::string text;
    for (std::size_t i = 0; i < shown; ++i) {
        bool const isLast = i + 1 == names.size();
        text += (i == 0 ? "" : isLast ? " and " : ", ") + printable(names[i]);
    }
    if (shown < names.size())
        text += fmt::format(" and {} more", names.size() - shown);
    return text;
}

std::string aliasText(StoryAlias const& alias) {
    return fmt::format("{} is \"{}\", {}", printable(alias.name), printable(alias.value),
                       originText(alias));
}

std::string nearText(NearLine const& line) {
    bool const namesAgents = line.reason == NearLine::Reason::otherAgent ||
                             line.reason == NearLine::Reason::noDefaultGroup;
    auto const text = reasonText(line);
    return namesAgents || line.agents.empty() ? text : text + "; for " + listText(line.agents);
}

} // namespace KeldaTool
