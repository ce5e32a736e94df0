#include "formatting/LineLayout.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "database/language/Keywords.h"

namespace KeldaTool {
namespace {

using KeldaDatabase::FileFamily;
using KeldaDatabase::KeywordValue;
using KeldaDatabase::LanguageKeyword;
using Kind = LaidOutLine::Kind;

// Longer ones would push the columns of their neighbours out of sight.
constexpr std::size_t widestCell = 80;
constexpr std::size_t widestComment = 300;

constexpr std::string_view indentation = "    ";
constexpr std::string_view gapBeforeComment = "  ";
constexpr std::string_view matchActiveName = "matchActiveName";

constexpr std::string_view wouldBeTooLong = "the line would be longer than 1023 characters";
constexpr std::string_view commentInside = "a comment stands in a continued line";
constexpr std::string_view nothingInside = "the line is continued, and nothing stands in it";
constexpr std::string_view brokenWord = "'matchActiveName' is looked for with its blanks";
constexpr std::string_view blanksCount = "the blanks of a condition are a part of it";
constexpr std::string_view lineEndCounts = "a line end would become a part of the condition";

struct CodeAndComment {
    std::string_view code;
    std::string_view comment; // with its "#"; may be empty
};

CodeAndComment split(std::string_view line) {
    auto const at = std::min(line.find('#'), line.size());
    return {line.substr(0, at), line.substr(at)};
}

std::string_view withoutBlanksBehind(std::string_view text) {
    while (!text.empty() && isBlank(text.back()))
        text.remove_suffix(1);
    return text;
}

std::string withGap(std::string_view head, std::string_view tail) {
    std::string text(head);
    if (!head.empty() && !tail.empty())
        text += ' ';
    return text.append(tail);
}

std::string withComment(std::string text, std::string_view comment) {
    if (comment.empty())
        return text;
    return text.append(text.empty() ? "" : gapBeforeComment).append(withoutBlanksBehind(comment));
}

// --- what kind of line it is, told by the line without blanks and comment ---

bool isPathLine(std::string_view line, FileFamily family) {
    auto const commas = std::ranges::count(line, ',');
    return family == FileFamily::preinit ? commas >= 1
                                         : commas >= 2 && line.find('=') == std::string_view::npos;
}

// The keyword that makes the line what it is; null where none does.
LanguageKeyword const* keywordIn(std::string_view line, FileFamily family) {
    auto const* const keyword = KeldaDatabase::keywordOf(line, family);
    if (keyword == nullptr || keyword->value == KeywordValue::agentName)
        return nullptr;
    bool const isAlias = keyword->value == KeywordValue::alias;
    bool const isComplete = isAlias ? line.find('=') != std::string_view::npos
                                    : family == FileFamily::profile || isPathLine(line, family);
    return isComplete ? keyword : nullptr;
}

// --- path lines ---

std::string canonicalAttribute(std::string_view text) {
    for (auto const& attribute : KeldaDatabase::preinitAttributes())
        if (text.size() == attribute.spelling.size() && beginsWith(text, attribute.spelling))
            return std::string(attribute.spelling);
    return std::string(text);
}

// "CONFIG: path" or the path.
std::string firstCell(std::string_view text, FileFamily family) {
    auto const* const keyword =
        family == FileFamily::preinit ? KeldaDatabase::keywordOf(text, family) : nullptr;
    if (keyword == nullptr)
        return std::string(text);
    return withGap(keyword->spelling, text.substr(keyword->spelling.size()));
}

// What follows the second comma is one cell.
std::vector<std::string> cellsOf(std::string_view line, FileFamily family) {
    auto const first = line.find(',');
    auto const second = std::min(line.find(',', first + 1), line.size());
    std::vector<std::string> cells{firstCell(line.substr(0, first), family),
                                   std::string(line.substr(first + 1, second - first - 1))};
    if (second == line.size())
        return cells;
    auto const third = line.substr(second + 1);
    cells.push_back(family == FileFamily::preinit ? canonicalAttribute(third) : std::string(third));
    return cells;
}

std::string joined(std::vector<std::string> const& cells) {
    std::string text = cells.front();
    for (std::size_t i = 1; i < cells.size(); ++i)
        text.append(cells[i].empty() && i + 1 == cells.size() ? "," : ", ").append(cells[i]);
    return text;
}

LaidOutLine pathLine(std::string_view code, std::string_view comment, FileFamily family) {
    LaidOutLine line;
    line.cells = cellsOf(code, family);
    line.comment = withoutBlanksBehind(comment);
    line.text = withComment(joined(line.cells), comment);
    bool const fits =
        line.comment.size() <= widestComment &&
        std::ranges::all_of(line.cells, [](auto const& cell) { return cell.size() <= widestCell; });
    line.kind = fits ? Kind::row : Kind::loose;
    return line;
}

// --- keyword lines ---

std::string_view valueOf(std::string_view line, LanguageKeyword const& keyword) {
    return line.substr(keyword.spelling.size());
}

std::string spacedCommas(std::string_view list) {
    std::string text;
    for (char const c : list) {
        text += c;
        if (c == ',')
            text += ' ';
    }
    return text;
}

// The operators of an expression with blanks around them. Only those of one kind are operators.
std::string spacedExpression(std::string_view expression) {
    if (expression.find(',') != std::string_view::npos)
        return spacedCommas(expression);
    std::string operators = "~";
    auto operatorAt = expression.find('~');
    if (operatorAt == std::string_view::npos) {
        operators = "?:";
        if (expression.find('?') > expression.find(':'))
            return std::string(expression);
    }
    std::string text;
    for (char const c : expression) {
        auto const found = operators.find(c);
        if (found == std::string::npos) {
            text += c;
            continue;
        }
        operators.erase(found, 1); // only the first of its kind
        text.append({' ', c, ' '});
    }
    return text;
}

// "%name = expression"
std::string spacedAlias(std::string_view definition) {
    auto const sign = definition.find('=');
    std::string text(definition.substr(0, sign));
    text.append(" = ").append(withoutBlanksAround(spacedExpression(definition.substr(sign + 1))));
    return text;
}

std::string keywordLine(std::string_view code, LanguageKeyword const& keyword) {
    auto const value = valueOf(code, keyword);
    if (keyword.value == KeywordValue::alias)
        return withGap(keyword.spelling, withoutBlanksAround(spacedAlias(value)));
    if (keyword.value == KeywordValue::group)
        return withGap(keyword.spelling, withoutBlanksAround(spacedCommas(value)));
    return withGap(keyword.spelling, value);
}

// Behind the colon the line is handed on as it is, up to a comment or with its line end.
std::string conditionText(std::string_view bytes, LanguageKeyword const& keyword) {
    std::string text(keyword.spelling);
    return text.append(bytes.substr(bytes.find(':') + 1));
}

LaidOutLine conditionLine(SourceLine const& source, LanguageKeyword const& keyword) {
    auto const parts = split(source.parts.front());
    if (parts.comment.empty() && !source.endsInNewline())
        return {.obstacle = lineEndCounts};
    return {.text = conditionText(parts.comment.empty() ? parts.code
                                                        : withoutBlanksBehind(source.parts.front()),
                                  keyword)};
}

// --- lines of one part ---

LaidOutLine agentNameLine(SourceLine const& source) {
    constexpr std::string_view spelling = "agentName:";
    auto const line = withoutBlanks(source.parts.front());
    // To whoever includes the file it may be a path line, of which the keyword is a part.
    auto const word = isPathLine(line, FileFamily::profile)
                          ? std::string_view(line).substr(0, spelling.size())
                          : spelling;
    return {.text = withGap(word, std::string_view(line).substr(spelling.size()))};
}

LaidOutLine singleLine(SourceLine const& source, FileFamily family) {
    if (source.namesAgent)
        return agentNameLine(source);
    auto const [code, comment] = split(source.parts.front());
    auto const line = withoutBlanks(code);
    if (line.empty() && comment.empty())
        return {.kind = Kind::blank};
    if (line.empty())
        return {.kind = Kind::comment, .text = std::string(withoutBlanksBehind(comment))};
    if (isPathLine(line, family))
        return pathLine(line, comment, family);
    auto const* const keyword = keywordIn(line, family);
    if (keyword == nullptr)
        return {.text = withComment(std::string(withoutBlanksAround(code)), comment)};
    if (keyword->value == KeywordValue::condition)
        return conditionLine(source, *keyword);
    return {.text = withComment(keywordLine(line, *keyword), comment)};
}

// --- continued lines ---

// Lays out the parts of a continued path line: cells may be spread over them as one likes.
class PathParts {
  public:
    // `lastCell` is that of the whole line, as it is to be written.
    PathParts(std::string lastCell, FileFamily family)
        : family_(family), lastCell_(std::move(lastCell)) {}

    std::string next(std::string_view code) {
        auto rest = withoutBlanks(code);
        std::string text;
        for (auto comma = rest.find(','); commas_ < 2 && comma != std::string::npos;
             comma = rest.find(',')) {
            text.append(cell(rest.substr(0, comma))).append(", ");
            rest.erase(0, comma + 1);
            ++commas_;
            isAtStart_ = true;
        }
        text += cell(rest);
        isAtStart_ = isAtStart_ && rest.empty();
        return text;
    }

  private:
    // A piece of a cell, or all of it.
    std::string cell(std::string_view text) const {
        if (isAtStart_ && commas_ == 0)
            return firstCell(text, family_);
        bool const isWhole = commas_ == 2 && text.size() == lastCell_.size();
        return isWhole ? lastCell_ : std::string(text);
    }

    FileFamily family_;
    std::string lastCell_;
    int commas_ = 0;
    bool isAtStart_ = true;
};

// A keyword that stands in the first part as a whole is spelt as usual; the rest is as it was.
std::string firstKeywordPart(std::string_view part, LanguageKeyword const& keyword) {
    bool const isWhole =
        keyword.value != KeywordValue::nothing && beginsWith(withoutBlanks(part), keyword.spelling);
    return isWhole
               ? withGap(keyword.spelling, withoutBlanksInFront(part.substr(part.find(':') + 1)))
               : std::string(withoutBlanksInFront(part));
}

// The backslash stands apart where a blank stood.
std::string continuedBy(std::string_view part) {
    std::string text(withoutBlanksBehind(part));
    return text.append(text.size() < part.size() ? " \\\n" : "\\\n");
}

LaidOutLine continuedCondition(SourceLine const& source, LanguageKeyword const& keyword) {
    if (!beginsWith(withoutBlanks(source.parts.front()), keyword.spelling))
        return {.obstacle = blanksCount};
    if (!source.endsInNewline())
        return {.obstacle = lineEndCounts};
    auto text = conditionText(source.bytes, keyword);
    text.pop_back();
    return {.text = text};
}

// What the parts say together; nothing if a comment stands before the last one's end.
std::optional<std::string> joinedCode(SourceLine const& source) {
    std::string line;
    for (auto const& part : source.parts) {
        bool const isLast = &part == &source.parts.back();
        if (!isLast && part.find('#') != std::string_view::npos)
            return std::nullopt;
        line += withoutBlanks(split(part).code);
    }
    return line;
}

std::string laidOutPart(std::string_view text, bool isFirst) {
    bool const isIndented = !isFirst && !withoutBlanks(text).empty();
    return std::string(isIndented ? indentation : "").append(text);
}

LaidOutLine continuedLine(SourceLine const& source, FileFamily family) {
    auto const line = joinedCode(source);
    if (!line)
        return {.obstacle = commentInside};
    if (line->empty())
        return {.obstacle = nothingInside};
    bool const isPath = isPathLine(*line, family);
    auto const* const keyword = isPath ? nullptr : keywordIn(*line, family);
    if (keyword != nullptr && keyword->value == KeywordValue::condition)
        return continuedCondition(source, *keyword);

    LaidOutLine result{.kind = isPath ? Kind::loose : Kind::other};
    PathParts pathParts(isPath ? cellsOf(*line, family).back() : "", family);
    for (auto const& part : source.parts) {
        bool const isFirst = &part == &source.parts.front();
        auto const [code, comment] = split(part);
        auto text = isPath                          ? pathParts.next(code)
                    : isFirst && keyword != nullptr ? firstKeywordPart(code, *keyword)
                                                    : std::string(withoutBlanksInFront(code));
        if (&part != &source.parts.back())
            text = continuedBy(text);
        else
            text = withComment(std::string(withoutBlanksBehind(text)), comment);
        result.text += laidOutPart(text, isFirst);
    }
    return result;
}

// --- whether the layout still means the same ---

// Whoever looks ahead for the keyword takes every line of the editor for itself, and takes blanks
// only from its front.
bool looksAlike(SourceLine const& source, std::string_view text) {
    for (auto const& part : source.parts) {
        auto const end = std::min(text.find('\n'), text.size());
        if (beginsWith(withoutBlanksInFront(part), matchActiveName) !=
            beginsWith(withoutBlanksInFront(text.substr(0, end)), matchActiveName))
            return false;
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return true;
}

std::string_view obstacleTo(std::string const& text, SourceLine const& source, FileFamily family) {
    if (family == FileFamily::profile && !source.namesAgent && !looksAlike(source, text))
        return brokenWord;
    if (source.parts.size() == 1)
        return text.size() < longestLine ? "" : wouldBeTooLong;
    auto const withEnd = text + "\n";
    auto const lines = sourceLines(withEnd, FileFamily::preinit);
    return lines.size() == 1 && lines.front().obstacle.empty() ? "" : wouldBeTooLong;
}

} // namespace

LaidOutLine laidOut(SourceLine const& line, FileFamily family) {
    LaidOutLine result{.obstacle = line.obstacle};
    if (result.obstacle.empty())
        result = line.parts.size() == 1 ? singleLine(line, family) : continuedLine(line, family);
    if (result.obstacle.empty())
        result.obstacle = obstacleTo(result.text, line, family);
    if (!result.obstacle.empty())
        result = {.text = std::string(line.bytes), .obstacle = result.obstacle};
    return result;
}

} // namespace KeldaTool
