#include "AgentNamesShown.h"

#include <KeldaBase/MountFileInfo.h>
#include <fmt/format.h>

#include "database/findings/Spelling.h"
#include "database/paths/WrittenLine.h"

namespace KeldaDatabase {
namespace {

void addNames(Rook::String const& agentName, std::vector<std::string>& names) {
    auto const pieces = Kelda::MountFileInfo::tokenize(agentName, "-%");
    for (std::size_t i = names.size() + 1; i < pieces.size(); ++i) {
        auto name = pieces[i].view();
        if (i + 1 == pieces.size() && name.ends_with('$'))
            name.remove_suffix(1);
        names.push_back(fmt::format("%{}", name));
    }
}

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

} // namespace

std::vector<std::string> tokenNames(Device const& device, Agent const& agent) {
    std::vector<std::string> names;
    addNames(agent.name, names);
    for (auto const id : agent.profiles)
        if (!device.profiles[id].isDefaultGroup())
            addNames(device.profiles[id].agentName, names);
    return names;
}

// A digit that follows the number of a token is part of it only if there are as many tokens.
std::string withTokenNames(std::string_view text, std::vector<std::string> const& names) {
    std::string shown;
    for (std::size_t at = 0; at < text.size(); ++at) {
        std::size_t number = 0;
        std::size_t end = at + 1;
        while (text[at] == '%' && end < text.size() && isDigit(text[end]) &&
               10 * number + static_cast<std::size_t>(text[end] - '0') <= names.size())
            number = 10 * number + static_cast<std::size_t>(text[end++] - '0');
        if (number == 0) {
            shown += text[at];
            continue;
        }
        shown += names[number - 1];
        at = end - 1;
    }
    return shown;
}

std::string withTokenNumbers(std::string_view text, std::vector<std::string> const& names) {
    std::string numbered;
    std::size_t at = 0;
    for (auto const& token : tokensIn(text)) {
        auto const begin = text.find('%', at);
        numbered.append(text.substr(at, begin - at));
        at = begin + token.size();
        std::size_t number = 0;
        for (std::size_t i = names.size(); i-- > 0;)
            if (lowerCase(names[i]) == lowerCase(token))
                number = i + 1;
        numbered.append(number == 0 ? token : fmt::format("%{}", number));
    }
    numbered.append(text.substr(at));
    return numbered;
}

std::size_t restToken(Profile const& profile) {
    if (!profile.hasTokens() || !profile.agentName.view().ends_with('$'))
        return 0;
    return Kelda::MountFileInfo::tokenize(profile.agentName, "-%").size() - 1;
}

bool holdsToken(std::string_view text, std::size_t number, std::size_t count) {
    std::vector<std::string> names(count, "%other");
    auto const withoutIt = withTokenNames(text, names);
    names[number - 1] = "%it";
    return withTokenNames(text, names) != withoutIt;
}

} // namespace KeldaDatabase
