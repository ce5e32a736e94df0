#include "Suppressions.h"

#include <algorithm>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>

#include <fmt/format.h>

#include "SourceText.h"
#include "Spelling.h"

namespace KeldaDatabase {
namespace {

constexpr std::string_view mark = "kelda:";
constexpr std::string_view howToWrite = "write '# kelda: allow RULE: reason'";

bool isBlank(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

std::string_view trimmed(std::string_view text) {
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back()))
        text.remove_suffix(1);
    return text;
}

// --- what a comment says ---

struct Directive {
    bool isForFile = false;
    std::vector<std::string> names;
    std::string problem; // empty for none
};

Directive malformed(std::string problem) {
    return {false, {}, std::move(problem)};
}

// The names between the commas.
std::vector<std::string> namesIn(std::string_view list) {
    std::vector<std::string> names;
    for (bool isLast = false; !isLast;) {
        auto const comma = list.find(',');
        isLast = comma == std::string_view::npos;
        if (auto const name = trimmed(list.substr(0, comma)); !name.empty())
            names.emplace_back(name);
        list.remove_prefix(isLast ? list.size() : comma + 1);
    }
    return names;
}

// What stands behind "kelda:".
Directive directiveOf(std::string_view text) {
    text = trimmed(text);
    constexpr std::string_view allow = "allow";
    constexpr std::string_view allowFile = "allow-file";
    Directive directive;
    directive.isForFile = text.starts_with(allowFile);
    auto const word = directive.isForFile ? allowFile : allow;
    auto const rest = text.substr(std::min(word.size(), text.size()));
    if (!text.starts_with(word) || (!rest.empty() && !isBlank(rest.front()) && rest.front() != ':'))
        return malformed("'kelda:' is followed by neither 'allow' nor 'allow-file'");
    auto const colon = rest.find(':');
    directive.names = namesIn(rest.substr(0, colon));
    if (directive.names.empty())
        return malformed("suppression names no rule");
    if (colon == std::string_view::npos || trimmed(rest.substr(colon + 1)).empty())
        return malformed(
            fmt::format("suppression of '{}' gives no reason", fmt::join(directive.names, ", ")));
    return directive;
}

// The rule that may be meant by a name that none has.
std::string_view nearestRule(std::string_view name) {
    std::vector<std::string_view> names;
    for (auto const& rule : allRules())
        names.push_back(rule.name);
    return nearestTo(name, names, std::max<std::size_t>(2, name.size() / 3));
}

bool isAboutSuppressions(RuleId rule) {
    return rule == RuleId::suppressionUnused || rule == RuleId::suppressionMalformed;
}

// --- where comments stand ---

// Whether the parser reads nothing but blanks and a comment.
bool saysNothing(SourceText const& text, EditorLines lines) {
    if (text.isTakenInPieces(lines.first))
        return false;
    for (auto number = lines.first; number <= lines.last; ++number) {
        auto line = text.line(number);
        auto const comment = line.find('#');
        line = line.substr(0, comment);
        if (number < lines.last && line.ends_with('\\'))
            line.remove_suffix(1);
        if (!trimmed(line).empty())
            return false;
        if (comment != std::string_view::npos)
            return true;
    }
    return true;
}

// Finds for each comment, from the first line to the last, the lines that follow it.
class LinesBelow {
  public:
    explicit LinesBelow(SourceText const& text) : text_(text) {}

    // The next lines that say something; none at the end of the file.
    std::optional<EditorLines> below(EditorLines comment) {
        if (comment.last + 1 <= searchedTo_.first && searchedFrom_ <= comment.last + 1)
            return found();
        searchedFrom_ = comment.last + 1;
        searchedTo_ = text_.linesTakenWith(searchedFrom_);
        while (searchedTo_.first <= text_.lines() && saysNothing(text_, searchedTo_))
            searchedTo_ = text_.linesTakenWith(searchedTo_.last + 1);
        return found();
    }

  private:
    std::optional<EditorLines> found() const {
        return searchedTo_.first <= text_.lines() ? std::optional(searchedTo_) : std::nullopt;
    }

    SourceText const& text_;
    std::int32_t searchedFrom_ = 1;
    EditorLines searchedTo_{0, 0};
};

// Whether a "#" stands before this byte, with nothing but blanks between.
bool beginsComment(std::string_view text, std::size_t at) {
    while (at > 0 && text[at - 1] != '\n' && isBlank(text[at - 1]))
        --at;
    return at > 0 && text[at - 1] == '#';
}

// The next "kelda:" at the beginning of a comment.
std::size_t nextMark(std::string_view text, std::size_t from) {
    auto at = text.find(mark, from);
    while (at != std::string_view::npos && !beginsComment(text, at))
        at = text.find(mark, at + mark.size());
    return at;
}

// The rest of the line behind a mark, with the lines that continue it, up to the next mark.
std::string textBehind(SourceText const& text, std::size_t at, std::size_t next) {
    auto const all = std::string_view(text.text());
    auto const end = next == std::string::npos ? all.size() : all.rfind('#', next);
    auto const last = text.linesTakenWith(text.lineOfByte(at)).last;
    auto begin = at + mark.size();
    std::string directive(all.substr(begin, std::min(all.find('\n', begin), end) - begin));
    for (auto number = text.lineOfByte(at); number < last && directive.ends_with('\\');) {
        auto const line = text.line(++number);
        begin = static_cast<std::size_t>(line.data() - all.data());
        directive.pop_back();
        if (begin >= end)
            break;
        directive += line.substr(0, end - begin);
    }
    return directive;
}

// --- the suppressions of a device ---

constexpr std::int32_t wholeFile = 0;

struct Suppression {
    std::string name;
    Place place; // of the comment
    RuleId rule = RuleId::otherFault;
    std::optional<std::int32_t> covered; // the first line, or wholeFile
};

class Suppressions {
  public:
    Suppressions(Device const& device, RuleSelection const& isChecked) : isChecked_(isChecked) {
        for (FileId file = 0; file < device.files.size(); ++file) {
            auto bytes = bytesOfFile(device.files[file].path());
            if (nextMark(bytes, 0) == std::string::npos)
                continue;
            auto const& text = texts_.emplace(file, SourceText(std::move(bytes))).first->second;
            readComments(file, text);
        }
    }

    // Whether a finding is allowed; all comments that do so count as used.
    bool cover(Finding const& finding) {
        auto const text = texts_.find(finding.place.file);
        if (text == texts_.end() || isAboutSuppressions(finding.rule))
            return false;
        auto const line = text->second.editorLine(finding.place.line);
        auto const first = text->second.linesTakenWith(line).first;
        bool const byLine = first > 0 && use({finding.place.file, finding.rule, first});
        return use({finding.place.file, finding.rule, wholeFile}) || byLine;
    }

    // What is wrong with the comments, in the order of their places.
    std::vector<Finding> findings() {
        for (auto const& suppression : suppressions_)
            if (!isUsed(suppression) && isChecked_(suppression.rule))
                add(RuleId::suppressionUnused, suppression.place, suppression.name,
                    fmt::format("suppression of '{}' covers nothing", suppression.name), "");
        std::ranges::stable_sort(findings_, {}, [](Finding const& finding) {
            return std::pair(finding.place.file, finding.place.line);
        });
        return std::move(findings_);
    }

  private:
    // File, rule, first line that is covered.
    using Key = std::tuple<FileId, RuleId, std::int32_t>;

    bool use(Key const& key) {
        auto const found = usedKeys_.find(key);
        if (found != usedKeys_.end())
            found->second = true;
        return found != usedKeys_.end();
    }
    bool isUsed(Suppression const& suppression) const {
        return suppression.covered &&
               usedKeys_.at({suppression.place.file, suppression.rule, *suppression.covered});
    }

    void readComments(FileId file, SourceText const& text) {
        LinesBelow linesBelow(text);
        for (auto at = nextMark(text.text(), 0); at != std::string::npos;) {
            auto const next = nextMark(text.text(), at + mark.size());
            readComment({file, text.parserLineOfByte(at), none}, text,
                        directiveOf(textBehind(text, at, next)), linesBelow);
            at = next;
        }
    }

    void readComment(Place const& place, SourceText const& text, Directive const& directive,
                     LinesBelow& linesBelow) {
        auto const lines = text.linesTakenWith(text.editorLine(place.line));
        if (lines.first <= text.agentNameLine() && text.agentNameLine() <= lines.last)
            add(RuleId::suppressionMalformed, place, std::string(mark),
                "no comment may follow in the agentName line",
                "write it in a line of its own above");
        else if (!directive.problem.empty())
            add(RuleId::suppressionMalformed, place, std::string(mark), directive.problem,
                std::string(howToWrite));
        else if (directive.isForFile)
            takeNames(directive, place, EditorLines{wholeFile, wholeFile});
        else
            takeNames(directive, place, saysNothing(text, lines) ? linesBelow.below(lines) : lines);
    }

    void takeNames(Directive const& directive, Place const& place,
                   std::optional<EditorLines> const& covered) {
        for (auto const& name : directive.names) {
            auto const* const rule = ruleNamed(name);
            if (rule == nullptr)
                addUnknownRule(place, name);
            else if (isAboutSuppressions(rule->id))
                add(RuleId::suppressionMalformed, place, name,
                    fmt::format("'{}' cannot be suppressed", name), "mend or remove the comment");
            else
                take({name, place, rule->id,
                      covered ? std::optional(covered->first) : std::nullopt});
        }
    }

    void take(Suppression suppression) {
        if (suppression.covered)
            usedKeys_.try_emplace(
                Key{suppression.place.file, suppression.rule, *suppression.covered}, false);
        suppressions_.push_back(std::move(suppression));
    }

    void addUnknownRule(Place const& place, std::string const& name) {
        auto const nearest = nearestRule(name);
        add(RuleId::suppressionMalformed, place, name,
            fmt::format("suppression of '{}': there is no such rule", name),
            nearest.empty() ? std::string() : fmt::format("did you mean '{}'?", nearest));
    }

    void add(RuleId rule, Place const& place, std::string const& text, std::string message,
             std::string hint) {
        if (!isChecked_(rule))
            return;
        Finding finding;
        finding.rule = rule;
        finding.severity = ruleOf(rule).severity;
        finding.place = place;
        finding.subject.text = text;
        std::erase_if(finding.subject.text, isBlank);
        finding.message = std::move(message);
        finding.hint = std::move(hint);
        findings_.push_back(std::move(finding));
    }

    RuleSelection const& isChecked_;
    std::map<FileId, SourceText> texts_; // of the files with suppressions
    std::vector<Suppression> suppressions_;
    std::map<Key, bool> usedKeys_; // what is covered, and whether there was something
    std::vector<Finding> findings_;
};

} // namespace

SuppressionResult suppress(Device const& device, std::vector<Finding> findings,
                           RuleSelection const& isChecked) {
    Suppressions suppressions(device, isChecked);
    auto const former = findings.size();
    std::erase_if(findings, [&](Finding const& finding) { return suppressions.cover(finding); });
    auto const suppressed = former - findings.size();
    auto more = suppressions.findings();
    std::move(more.begin(), more.end(), std::back_inserter(findings));
    return {std::move(findings), suppressed};
}

} // namespace KeldaDatabase
