#include "Hints.h"

#include <algorithm>
#include <span>
#include <vector>

#include <KeldaBase/MountFileInfo.h>
#include <fmt/format.h>

#include "NearPaths.h"
#include "Spelling.h"

namespace KeldaDatabase {
namespace {

constexpr std::string_view keywords[] = {
    "activeMount",       "agentName:",          "alias:",     "Condition:",
    "ConditionBlocker:", "connectionFlags:",    "Include:",   "MountGroup:",
    "matchActiveName",   "noDefaultMountGroup", "rootFlags:", "subAgent:"};

constexpr std::string_view mountFlags = "rwcifSDdOAKL";
constexpr std::string_view connectionFlags = "SNAE";

constexpr std::size_t mostAliases = 256;
constexpr std::size_t mostFiles = 256;

std::string didYouMean(std::string_view name) {
    return name.empty() ? std::string() : fmt::format("did you mean '{}'?", name);
}

// What stands in a message between two texts of its own; the second is the last of its kind.
std::string_view between(std::string_view message, std::string_view before,
                         std::string_view behind) {
    if (!message.starts_with(before))
        return {};
    message.remove_prefix(before.size());
    return message.substr(0, std::min(message.rfind(behind), message.size()));
}

bool holds(std::string_view text, char c) {
    return text.find(c) != std::string_view::npos;
}

// --- keywords ---

// A keyword without its colon, and what is compared with a word of a line that has none.
std::string_view withoutColon(std::string_view keyword) {
    return keyword.substr(0, keyword.find(':'));
}

// The longest keyword that a line begins with where it lacks its colon.
std::string_view keywordLackingColon(std::string_view line) {
    std::string_view longest;
    for (auto const keyword : keywords)
        if (holds(keyword, ':') && keyword.size() > longest.size() &&
            startsWithIgnoringCase(line, withoutColon(keyword)))
            longest = keyword;
    return longest;
}

// What a line of no kind may have been meant for.
std::string hintForLine(std::string_view line) {
    auto const commas = std::ranges::count(line, ',');
    if (startsWithIgnoringCase(line, "alias:"))
        return "an alias line has a '=': alias:%name=expression";
    bool const isLikePath = holds(line.substr(0, line.find(',')), '/');
    auto const keyword = isLikePath ? std::string_view() : nearestKeyword(line);
    if (keyword == "agentName:")
        return "an agent's name only stands in the first line of a profile";
    if (!keyword.empty())
        return didYouMean(keyword);
    if (commas >= 2 && holds(line, '='))
        return "a path line holds no '='";
    if (commas == 1)
        return "a path line has three fields: path,type,flags";
    return {};
}

std::string hintForTextAfter(std::string_view line) {
    for (auto const keyword : keywords)
        if (!holds(keyword, ':') && startsWithIgnoringCase(line, keyword))
            return fmt::format("nothing may follow '{}' in its line", keyword);
    return {};
}

std::string hintForIncludedLine(std::string_view line) {
    if (!startsWithIgnoringCase(line, "agentName:"))
        return {};
    return "the Include line takes in a profile";
}

// --- flags and attributes ---

// The permitted letter that differs in case only, of one that is not permitted.
char twinOf(char letter, std::string_view permitted) {
    for (char const candidate : permitted)
        if (equalIgnoringCase({&candidate, 1}, {&letter, 1}))
            return candidate;
    return '\0';
}

std::string hintForLetter(std::string_view letter, std::string_view permitted,
                          std::string const& rule) {
    if (letter == ",")
        return "flags stand side by side, without commas";
    auto const twin = letter.size() == 1 ? twinOf(letter.front(), permitted) : '\0';
    return twin == '\0' ? rule : fmt::format("{} {}", didYouMean({&twin, 1}), rule);
}

std::string hintForFlag(std::string_view letter) {
    return hintForLetter(
        letter, fmt::format("{}{}", mountFlags, connectionFlags),
        fmt::format("flags are letters of {} and {}", mountFlags, connectionFlags));
}

std::string hintForConnectionFlag(std::string_view letter) {
    return hintForLetter(letter, connectionFlags,
                         fmt::format("connection flags are letters of {}", connectionFlags));
}

std::string hintForAttribute(std::string_view attribute) {
    constexpr std::string_view attributes[] = {"createOnMount", "createOnStandby"};
    constexpr std::size_t allowed = 4;
    if (attribute.empty())
        return "without an attribute, a preinit line has one comma only";
    if (holds(attribute, ','))
        return "a preinit line has at most three fields: path,type,attribute";
    auto const nearest = nearestTo(attribute, attributes, allowed);
    return nearest.empty() ? "the attributes are createOnMount and createOnStandby"
                           : didYouMean(nearest);
}

bool isTokenCharacter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
}

// The tokens of the cells are the only ones that need no attribute.
std::string hintForTokens(std::string_view path) {
    constexpr std::string_view cellTokens[] = {"%cellId", "%peerCellId", "%cellPath",
                                               "%peerCellPath"};
    constexpr std::size_t allowed = 2;
    for (auto at = path.find('%'); at != std::string_view::npos; at = path.find('%', at + 1)) {
        auto const rest = path.substr(at);
        auto const* const end = std::find_if_not(rest.begin() + 1, rest.end(), isTokenCharacter);
        auto const token = rest.substr(0, static_cast<std::size_t>(end - rest.begin()));
        auto const nearest = nearestTo(token, cellTokens, allowed);
        if (!nearest.empty() && !equalIgnoringCase(nearest, token))
            return didYouMean(nearest);
    }
    return {};
}

// --- aliases ---

constexpr std::string_view predefinedAliases[] = {"%cellId", "%peerCellId", "%sysname", "%sliceId",
                                                  "%agentString"};
constexpr std::string_view shortForms[] = {"%cellPath", "%peerCellPath"};

// What an alias could have been named instead: the names of its profile first.
std::vector<std::string_view> aliasesKnownTo(Device const& device, ProfileId profile) {
    std::vector<std::string_view> names;
    if (profile != none) {
        auto const& range = device.profiles[profile].aliases;
        auto const end = std::min(range.end, range.begin + mostAliases);
        for (auto i = range.begin; i < end; ++i)
            if (device.aliases[i].name.startsWith("%"))
                names.push_back(device.aliases[i].name.view());
    }
    names.insert(names.end(), std::begin(predefinedAliases), std::end(predefinedAliases));
    names.insert(names.end(), std::begin(shortForms), std::end(shortForms));
    return names;
}

// The longest name that an unknown one goes on behind: "%place" of "%placeleft".
std::string_view longestStart(std::string_view name, std::span<std::string_view const> known) {
    std::string_view longest;
    for (auto const candidate : known)
        if (candidate.size() > std::max<std::size_t>(longest.size(), 1) &&
            startsWithIgnoringCase(name, candidate))
            longest = candidate;
    return longest;
}

std::string hintForAlias(Device const& device, ProfileId profile, std::string_view name) {
    if (name == "%")
        return "a '%' by itself names no alias";
    if (!name.starts_with('%'))
        return "an operand is either an alias or a text without '%'";
    auto const known = aliasesKnownTo(device, profile);
    for (auto const candidate : known)
        if (equalIgnoringCase(candidate, name))
            return std::ranges::count(shortForms, candidate) > 0
                       ? fmt::format("'{}' is known in paths only", candidate)
                       : fmt::format("'{}' is defined further down only", candidate);
    auto const allowed = std::clamp<std::size_t>(name.size() / 3, 1, 3);
    if (auto const nearest = nearestTo(name, known, allowed); !nearest.empty())
        return didYouMean(nearest);
    auto const start = longestStart(name, known);
    if (start.empty())
        return profile != none && device.profiles[profile].isDefaultGroup()
                   ? "a default file knows no token and no alias of a profile"
                   : "";
    return fmt::format("{} the name of an alias ends before the first character that is no letter, "
                       "digit or '_'",
                       didYouMean(start));
}

// --- includes ---

std::string hintForInclude(Device const& device, std::string_view name) {
    for (auto const& file : device.skipped)
        if (file.name == name)
            return fmt::format("a file '{}' is there, but passed over", name);
    std::vector<std::string_view> files;
    for (auto const& file : device.files)
        if (file.family == FileFamily::profile && !file.hasAgentName && files.size() < mostFiles)
            files.push_back(file.name);
    auto const allowed = std::min<std::size_t>(name.size() / 3, 3);
    return didYouMean(nearestTo(name, files, allowed));
}

// --- paths ---

constexpr std::string_view noTypeFor = "No type info for path '";
constexpr std::string_view noTypeFound = "' found in preinit files";

// Without the slashes at its beginning and those that follow another one.
std::string withoutSpareSlashes(std::string_view path) {
    std::string result;
    for (char const c : path)
        if (c != '/' || (!result.empty() && result.back() != '/'))
            result += c;
    return result;
}

// What can be told of a path without a type by its looks.
std::string hintForLooksOf(std::string_view path, std::string_view message) {
    for (auto const keyword : keywords)
        if (holds(keyword, ':') && startsWithIgnoringCase(path, keyword))
            return fmt::format("a line with two commas is a path line, although it begins with "
                               "'{}'",
                               keyword);
    if (path.starts_with('/'))
        return "paths have no leading '/'";
    if (message.find("not loaded from any preinit") == std::string_view::npos)
        return "a preinit line declares the path, but gives it no type";
    return {};
}

std::string_view pathOf(std::string_view message) {
    return between(message, noTypeFor, noTypeFound);
}

// What a message tells by itself.
std::string hintForMessage(Device const& device, RuleId rule, ProfileId profile,
                           std::string_view message) {
    switch (rule) {
    case RuleId::unknownKeyword:
        return hintForLine(between(message, "syntax error: '", "'"));
    case RuleId::textAfterKeyword:
        return hintForTextAfter(between(message, "syntax error: '", "'"));
    case RuleId::notAllowedInInclude:
        return hintForIncludedLine(between(message, "Syntax error in included file: '", "'"));
    case RuleId::flagUnknown:
        return hintForFlag(between(message, "Encountered unknown mount flag ", ""));
    case RuleId::connectionFlagUnknown:
        return hintForConnectionFlag(between(message, "Encountered invalid connection flag ", ""));
    case RuleId::attributeUnknown:
        return hintForAttribute(between(message, "invalid attribute: ", ""));
    case RuleId::tokenNeedsCreateOnMount:
        return hintForTokens(between(message, "non-cell tokens in non-createOnMount path: ", ""));
    case RuleId::aliasUndefined:
        return hintForAlias(device, profile, between(message, "No such alias defined: '", "'"));
    case RuleId::includeNotFound:
        return hintForInclude(device,
                              between(message, "Cannot find profile to include matching ", ""));
    case RuleId::pathWithoutType:
        return hintForLooksOf(pathOf(message), message);
    default:
        return {};
    }
}

} // namespace

std::string_view nearestKeyword(std::string_view line) {
    auto const colon = line.find(':');
    if (colon == std::string_view::npos) {
        if (auto const keyword = keywordLackingColon(line); !keyword.empty())
            return keyword;
        auto const allowed = std::max<std::size_t>(1, line.size() / 4);
        return nearestTo(line, keywords, allowed);
    }
    auto const word = line.substr(0, colon + 1);
    return nearestTo(word, keywords, std::max<std::size_t>(1, word.size() / 3));
}

Hints::Hints(Device const& device) : device_(device) {}

Hints::~Hints() = default;

NearPaths& Hints::paths() {
    if (!paths_)
        paths_ = std::make_unique<NearPaths>(device_);
    return *paths_;
}

std::string Hints::of(RuleId rule, Fault const& fault) {
    auto const message = fault.exception.msg.view();
    auto const hint = hintForMessage(device_, rule, fault.profile, message);
    return rule == RuleId::pathWithoutType && hint.empty() ? ofPath(message) : hint;
}

// A path that no preinit line declares, in its wildcard form.
std::string Hints::ofPath(std::string_view message) {
    auto const wildcardPath = Kelda::MountFileInfo::wildcardPath(Rook::String(pathOf(message)));
    std::string const path(wildcardPath.view());
    if (auto const found = paths().inAnotherCase(withoutSpareSlashes(path)); !found.empty())
        return didYouMean(found);
    if (auto const found = paths().withTokens(path); !found.empty())
        return fmt::format("'{}' is declared: where it has a token, a mount has an alias", found);
    return didYouMean(paths().misspelt(path));
}

std::string hintFor(Device const& device, RuleId rule, Fault const& fault) {
    return Hints(device).of(rule, fault);
}

std::string hintFor(Device const& device, RuleId rule, Kelda::MfiException const& fault) {
    return hintForMessage(device, rule, none, fault.msg.view());
}

} // namespace KeldaDatabase
