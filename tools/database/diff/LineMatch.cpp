#include "LineMatch.h"

#include <algorithm>
#include <map>
#include <string_view>
#include <unordered_map>

#include "database/findings/Spelling.h"
#include "database/language/Keywords.h"
#include "database/paths/WrittenLine.h"

namespace KeldaDatabase {
namespace {

// What tells a line from others when it is edited.
std::string subjectOf(std::string const& text, FileFamily family) {
    if (family == FileFamily::preinit) {
        auto const fields = preinitFields(text);
        return fields ? fields->path : text;
    }
    if (auto const fields = pathFields(text))
        return fields->path;
    auto const* const keyword = keywordOf(text, family);
    if (keyword == nullptr)
        return text;
    if (keyword->value == KeywordValue::alias)
        return lowerCase(text.substr(0, text.find('=')));
    return lowerCase(keyword->spelling);
}

bool isTextLess(WrittenFile const& a, WrittenFile const& b) {
    return std::lexicographical_compare(
        a.lines().begin(), a.lines().end(), b.lines().begin(), b.lines().end(),
        [](auto const& x, auto const& y) { return x.text < y.text; });
}

} // namespace

WrittenFile::WrittenFile(SourceText const& text, FileFamily family) {
    for (std::int32_t number = 1; number <= text.lines();) {
        auto const logical = logicalLine(text, number);
        if (auto written = withoutBlanks(logical.text); !written.empty()) {
            auto subject = subjectOf(written, family);
            lines_.push_back({number, std::move(written), std::move(subject)});
        }
        number = logical.next;
    }
}

std::optional<std::size_t> WrittenFile::at(std::int32_t editorLine) const {
    auto const behind = std::upper_bound(
        lines_.begin(), lines_.end(), editorLine,
        [](std::int32_t number, Line const& line) { return number < line.number; });
    if (behind == lines_.begin())
        return std::nullopt;
    return static_cast<std::size_t>(behind - lines_.begin()) - 1;
}

// Where lines could belong together in several ways, the way must not hang on which version is the
// former one.
LineMatch::LineMatch(WrittenFile const& before, WrittenFile const& after)
    : isSwapped_(isTextLess(after, before)), sides_{{isSwapped_ ? &after : &before, {}, {}, {}},
                                                    {isSwapped_ ? &before : &after, {}, {}, {}}} {
    for (auto& side : sides_)
        for (auto* const list : {&side.same, &side.edited, &side.replaced})
            list->assign(side.file->lines().size(), nothing);
    matchInOrder();
    matchMoved();
    pairEdited();
    pairReplaced();
}

void LineMatch::pair(std::vector<Index> Side::*member, Index before, Index after) {
    (sides_[0].*member)[before] = after;
    (sides_[1].*member)[after] = before;
}

// The longest list of lines that stand once in each version and in the same order in both; what is
// equal before and behind them belongs together, too.
void LineMatch::matchInOrder() {
    struct Standing {
        std::size_t count[2] = {0, 0};
        Index at[2] = {0, 0};
    };
    std::unordered_map<std::string_view, Standing> texts;
    for (std::size_t side = 0; side < 2; ++side)
        for (Index i = 0; i < sides_[side].same.size(); ++i) {
            auto& standing = texts[sides_[side].file->lines()[i].text];
            ++standing.count[side];
            standing.at[side] = i;
        }
    // Patience: the piles' tops, and for each card the top of the pile before it.
    std::vector<Index> piles, from(sides_[0].same.size(), nothing), to(sides_[0].same.size());
    for (Index i = 0; i < sides_[0].same.size(); ++i) {
        auto const& standing = texts[sides_[0].file->lines()[i].text];
        if (standing.count[0] != 1 || standing.count[1] != 1)
            continue;
        to[i] = standing.at[1];
        auto const pile = std::lower_bound(piles.begin(), piles.end(), to[i],
                                           [&](Index top, Index at) { return to[top] < at; });
        from[i] = pile == piles.begin() ? nothing : *std::prev(pile);
        if (pile == piles.end())
            piles.push_back(i);
        else
            *pile = i;
    }
    Gap gap{{0, 0}, {sides_[0].same.size(), sides_[1].same.size()}};
    for (auto i = piles.empty() ? nothing : piles.back(); i != nothing; i = from[i]) {
        pair(&Side::same, i, to[i]);
        matchBetween({{i + 1, to[i] + 1}, {gap.end[0], gap.end[1]}});
        gap.end[0] = i;
        gap.end[1] = to[i];
    }
    matchBetween(gap);
}

void LineMatch::matchBetween(Gap gap) {
    auto const isEqual = [&](Index before, Index after) {
        return sides_[0].file->lines()[before].text == sides_[1].file->lines()[after].text;
    };
    while (gap.begin[0] < gap.end[0] && gap.begin[1] < gap.end[1] &&
           isEqual(gap.begin[0], gap.begin[1]))
        pair(&Side::same, gap.begin[0]++, gap.begin[1]++);
    while (gap.begin[0] < gap.end[0] && gap.begin[1] < gap.end[1] &&
           isEqual(gap.end[0] - 1, gap.end[1] - 1))
        pair(&Side::same, --gap.end[0], --gap.end[1]);
}

// Equal texts that are left belong together one by one.
void LineMatch::matchMoved() {
    std::unordered_map<std::string_view, std::vector<Index>> left;
    for (Index i = sides_[1].same.size(); i-- > 0;)
        if (sides_[1].same[i] == nothing)
            left[sides_[1].file->lines()[i].text].push_back(i);
    for (Index i = 0; i < sides_[0].same.size(); ++i) {
        if (sides_[0].same[i] != nothing)
            continue;
        auto const found = left.find(sides_[0].file->lines()[i].text);
        if (found == left.end() || found->second.empty())
            continue;
        pair(&Side::same, i, found->second.back());
        found->second.pop_back();
    }
}

void LineMatch::pairEdited() {
    std::unordered_map<std::string_view, std::vector<Index>> left;
    for (Index i = sides_[1].same.size(); i-- > 0;)
        if (sides_[1].same[i] == nothing)
            left[sides_[1].file->lines()[i].subject].push_back(i);
    for (Index i = 0; i < sides_[0].same.size(); ++i) {
        if (sides_[0].same[i] != nothing)
            continue;
        auto const found = left.find(sides_[0].file->lines()[i].subject);
        if (found == left.end() || found->second.empty())
            continue;
        pair(&Side::edited, i, found->second.back());
        found->second.pop_back();
    }
}

// Between two lines that are there in both versions, those that are left stand for each other in
// their order.
void LineMatch::pairReplaced() {
    using Anchor = std::pair<Index, Index>; // what stands before, in each version
    std::map<Anchor, std::vector<Index>> left;
    auto const isLeft = [&](std::size_t side, Index i) {
        return sides_[side].same[i] == nothing && sides_[side].edited[i] == nothing;
    };
    Anchor anchor(nothing, nothing);
    for (Index i = 0; i < sides_[1].same.size(); ++i)
        if (sides_[1].same[i] != nothing)
            anchor = {sides_[1].same[i], i};
        else if (isLeft(1, i))
            left[anchor].push_back(i);
    for (auto& [at, lines] : left)
        std::reverse(lines.begin(), lines.end());
    anchor = {nothing, nothing};
    for (Index i = 0; i < sides_[0].same.size(); ++i)
        if (sides_[0].same[i] != nothing)
            anchor = {i, sides_[0].same[i]};
        else if (auto const found = left.find(anchor);
                 isLeft(0, i) && found != left.end() && !found->second.empty()) {
            pair(&Side::replaced, i, found->second.back());
            found->second.pop_back();
        }
}

std::optional<std::int32_t> LineMatch::look(std::vector<Index> Side::*member, Version version,
                                            std::int32_t line) const {
    std::size_t const side = (version == Version::after) != isSwapped_ ? 1 : 0;
    auto const& here = sides_[side];
    auto const& there = sides_[1 - side];
    auto const index = here.file->at(line);
    if (!index || (here.*member)[*index] == nothing)
        return std::nullopt;
    return there.file->lines()[(here.*member)[*index]].number;
}

std::optional<std::int32_t> LineMatch::same(Version version, std::int32_t line) const {
    return look(&Side::same, version, line);
}

std::optional<std::int32_t> LineMatch::edited(Version version, std::int32_t line) const {
    return look(&Side::edited, version, line);
}

std::optional<std::int32_t> LineMatch::replaced(Version version, std::int32_t line) const {
    auto const found = edited(version, line);
    return found ? found : look(&Side::replaced, version, line);
}

} // namespace KeldaDatabase
