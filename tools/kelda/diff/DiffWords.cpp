#include "diff/DiffWords.h"

#include <algorithm>
#include <array>
#include <set>

#include <fmt/format.h>

namespace KeldaTool {
namespace {

using KeldaDatabase::Change;
using KeldaDatabase::ChangeCause;
using KeldaDatabase::ChangeClass;
using KeldaDatabase::ChangeKind;

// How the values of a kind are told.
enum class Values { none, flags, text, yesOrNo };

struct KindWords {
    Values values = Values::none;
    std::string_view headline = {}; // with yes or no: when it is yes now
    std::string_view ifNo = {};     // when it is no now
    std::string_view before = {};   // what stands before the value that came or went
    std::string_view absent = "none";
};

// In the order of the enumeration.
constexpr std::array<KindWords, 26> kindWords{{
    {.headline = "agent added"},
    {.headline = "agent removed"},
    {.values = Values::text, .headline = "agent stops at a fault"},
    {.values = Values::text, .headline = "agent no longer stops at a fault", .before = "was: "},
    {.values = Values::flags, .headline = "mount added", .before = "flags: "},
    {.values = Values::flags, .headline = "mount removed", .before = "flags were: "},
    {.values = Values::flags, .headline = "flags widened", .absent = "no flags"},
    {.values = Values::flags, .headline = "flags narrowed", .absent = "no flags"},
    {.values = Values::flags, .headline = "flags replaced", .absent = "no flags"},
    {.values = Values::text, .headline = "type changed"},
    {.values = Values::text, .headline = "mount group added", .before = "also in "},
    {.values = Values::text, .headline = "mount group removed", .before = "no longer in "},
    {.values = Values::text, .headline = "priority of the mount group changed"},
    {.values = Values::text, .headline = "condition changed", .absent = "no condition"},
    {.values = Values::flags, .headline = "root flags changed", .absent = "no flags"},
    {.values = Values::flags, .headline = "connection flags changed", .absent = "no flags"},
    {.values = Values::text, .headline = "sub-agents changed"},
    {.values = Values::yesOrNo,
     .headline = "agent has active mounts now",
     .ifNo = "agent has no active mounts any more"},
    {.values = Values::yesOrNo,
     .headline = "agent has an -Active- variant now",
     .ifNo = "agent has no -Active- variant any more"},
    {.values = Values::yesOrNo,
     .headline = "agent refuses the default mount groups now",
     .ifNo = "agent takes the default mount groups again"},
    {.values = Values::text, .headline = "token takes another part of the agent's name"},
    {.values = Values::text, .headline = "declaration added", .before = "type: "},
    {.values = Values::text, .headline = "declaration removed", .before = "type was: "},
    {.values = Values::text, .headline = "declared type changed"},
    {.values = Values::text, .headline = "declared attribute changed", .absent = "no attribute"},
    {.values = Values::yesOrNo,
     .headline = "path became a config path",
     .ifNo = "path is no config path any more"},
}};
static_assert(kindWords.size() == static_cast<std::size_t>(ChangeKind::preinitConfigChanged) + 1);

KindWords const& wordsFor(ChangeKind kind) {
    return kindWords[static_cast<std::size_t>(kind)];
}

// What a cause has done, by the side on which its lines stand. "{}" is an alias.
struct CauseWords {
    std::string_view bothSides, newSide, oldSide;
};
constexpr std::array<CauseWords, 7> causeWords{{
    {"", "", ""},
    {"because another file is read", "because the file is new", "because the file is gone"},
    {"because an Include line finds other files", "because an Include line is new",
     "because an Include line is gone"},
    {"because {} has another value", "because {} is defined now",
     "because {} is not defined any more"},
    {"because an agent-name line is for other agents", "because a profile is for the agent now",
     "because a profile is not for the agent any more"},
    {"because a keyword line is another one", "because a keyword line is new",
     "because a keyword line is gone"},
    {"because a preinit line is another one", "because a preinit line is new",
     "because a preinit line is gone"},
}};
static_assert(causeWords.size() == static_cast<std::size_t>(ChangeCause::preinit) + 1);

std::string_view wordsFor(Change const& change) {
    auto const& words = causeWords[static_cast<std::size_t>(change.cause)];
    if (change.oldPlaces.empty() == change.newPlaces.empty())
        return words.bothSides;
    return change.oldPlaces.empty() ? words.newSide : words.oldSide;
}

// Whether a change is about the lines that cause it: a keyword's about keyword lines.
bool isAboutItsCause(Change const& change) {
    bool const isOfPreinit = change.kind >= ChangeKind::preinitAdded;
    bool const isOfTokens = change.kind == ChangeKind::tokensChanged;
    bool const isOfKeyword = change.kind >= ChangeKind::groupAdded && !isOfPreinit && !isOfTokens;
    return (isOfPreinit && change.cause == ChangeCause::preinit) ||
           (isOfTokens && change.cause == ChangeCause::agentName) ||
           (isOfKeyword && change.cause == ChangeCause::keyword);
}

// "%root" of the line "alias: %root = x"; "an alias" where the lines define several.
std::string aliasOf(Change const& change, Quoted const& quoted) {
    std::set<std::string> names;
    for (auto const* const places : {&change.oldPlaces, &change.newPlaces})
        for (auto const& place : *places) {
            auto const begin = std::min(place.text.find('%'), place.text.size());
            auto const end = place.text.find_first_of(" \t=", begin);
            names.insert(place.text.substr(begin, end - begin));
        }
    bool const isNamed = names.size() == 1 && !names.begin()->empty();
    return isNamed ? quoted(*names.begin()) : "an alias";
}

// The letters of a text that are not in another one, behind a sign; empty where there are none.
std::string lettersNotIn(std::string_view others, std::string_view text, char sign) {
    std::string letters(1, sign);
    for (char const letter : text)
        if (others.find(letter) == std::string_view::npos)
            letters += letter;
    return letters.size() == 1 ? std::string() : letters;
}

// " (+w -t)"; empty where no letter came or went.
std::string letterChanges(Change const& change, Quoted const& quoted) {
    auto const came = lettersNotIn(change.before, change.after, '+');
    auto const went = lettersNotIn(change.after, change.before, '-');
    if (came.empty() && went.empty())
        return {};
    return fmt::format(" ({})", quoted(fmt::format("{}{}{}", came,
                                                   came.empty() || went.empty() ? "" : " ", went)));
}

bool isAddition(ChangeKind kind) {
    return kind == ChangeKind::faultAdded || kind == ChangeKind::mountAdded ||
           kind == ChangeKind::groupAdded || kind == ChangeKind::preinitAdded;
}

bool isRemoval(ChangeKind kind) {
    return isAddition(mirrorOf(kind));
}

bool isOfGroup(ChangeKind kind) {
    return kind == ChangeKind::groupAdded || kind == ChangeKind::groupRemoved;
}

} // namespace

std::string_view headlineOf(Change const& change) {
    auto const& words = wordsFor(change.kind);
    bool const isSo = change.after == "yes" || change.after == "active";
    return words.values == Values::yesOrNo && !isSo ? words.ifNo : words.headline;
}

std::string valuesText(Change const& change, Quoted const& quoted) {
    auto const& words = wordsFor(change.kind);
    auto const shown = [&](std::string const& value) -> std::string {
        if (isOfGroup(change.kind) && value == "::")
            return "the group without a name";
        return value.empty() ? std::string(words.absent) : quoted(value);
    };
    if (words.values == Values::none || words.values == Values::yesOrNo)
        return {};
    if (isAddition(change.kind))
        return fmt::format("{}{}", words.before, shown(change.after));
    if (isRemoval(change.kind))
        return fmt::format("{}{}", words.before, shown(change.before));
    return fmt::format("{} -> {}{}", shown(change.before), shown(change.after),
                       words.values == Values::flags ? letterChanges(change, quoted) : "");
}

std::string causeText(Change const& change, Quoted const& quoted) {
    if (isAboutItsCause(change))
        return {};
    std::string const words(wordsFor(change));
    auto const gap = words.find("{}");
    if (gap == std::string::npos)
        return words;
    return fmt::format("{}{}{}", words.substr(0, gap), aliasOf(change, quoted),
                       words.substr(gap + 2));
}

std::string_view meaningOf(ChangeClass severity) {
    switch (severity) {
    case ChangeClass::dangerous:
        return "agents may not start, or lack what they had";
    case ChangeClass::risky:
        return "agents may act otherwise, or write what they did not write";
    case ChangeClass::notable:
        return "agents get more than they had, and only read it";
    case ChangeClass::harmless:
        break;
    }
    return "no agent loses anything, or does anything that it did not do";
}

std::string clipped(std::string const& text, std::size_t most) {
    constexpr std::string_view dots = "...";
    auto const begins = [](char c) { return (static_cast<unsigned char>(c) & 0xc0U) != 0x80U; };
    std::size_t characters = 0;
    std::size_t kept = 0; // bytes of what stays before the dots
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (!begins(text[i]))
            continue;
        if (++characters == most - dots.size() + 1)
            kept = i;
        if (characters > most)
            return fmt::format("{}{}", std::string_view(text).substr(0, kept), dots);
    }
    return text;
}

} // namespace KeldaTool
