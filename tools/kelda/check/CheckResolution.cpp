#include "check/CheckResolution.h"

#include <algorithm>
#include <filesystem>

namespace KeldaTool {
namespace {

using namespace KeldaDatabase;

std::string reasonOf(Kelda::SkipReason reason) {
    switch (reason) {
    case Kelda::SkipReason::semicolon:
        return "its name holds ';'";
    case Kelda::SkipReason::backup:
        return "its name ends in '~'";
    case Kelda::SkipReason::loadCheck:
        return "the file-load check refuses it";
    case Kelda::SkipReason::exclusion:
        return "it is excluded";
    }
    return "";
}

} // namespace

// Without "./" and double slashes, which services do not recognise.
std::string CheckResolution::shownPath(std::string const& path) const {
    return std::filesystem::path(nameOfFile_(path)).lexically_normal().string();
}

SourcePlace CheckResolution::placeOf(Place const& place, Subject const& subject) {
    if (!place.isKnown())
        return {};
    // Enough for the files of neighbouring findings; all of a large device would take much room.
    constexpr std::size_t mostTexts = 256;
    if (texts_.size() >= mostTexts)
        texts_.clear();
    auto const path = device_.pathOf(place);
    auto const& text = texts_.of(path);
    auto const spot = text.spotOf(place.line, subject);
    auto const line = std::max(1, spot.line);
    return {shownPath(path), line, spot.column, spot.width, std::string(text.line(line))};
}

IncludedFrom CheckResolution::includedFrom(IncludeId include) {
    auto const place = placeOf(device_.includes[include].place, {});
    return {place.file, place.line};
}

CheckedFinding CheckResolution::resolved(Finding const& finding) {
    CheckedFinding checked;
    checked.rule = &ruleOf(finding.rule);
    checked.severity = finding.severity;
    checked.place = placeOf(finding.place, finding.subject);
    checked.message = nameOfFile_(finding.message);
    checked.hint = nameOfFile_(finding.hint);
    checked.agents = finding.agents;
    checked.reportedLine = finding.place.line;
    for (auto const include : finding.includes)
        checked.includedFrom.push_back(includedFrom(include));
    for (auto const& related : finding.related)
        checked.related.push_back({placeOf(related.place, {}), related.text});
    return checked;
}

CheckResult CheckResolution::emptyResult() const {
    CheckResult result;
    for (auto const& file : device_.files) {
        ++(file.family == FileFamily::preinit ? result.preinitFiles : result.profiles);
        result.filesRead.push_back(shownPath(file.path()));
    }
    for (auto const& skipped : device_.skipped)
        result.filesSkipped.push_back(
            {shownPath(skipped.directory + "/" + skipped.name), reasonOf(skipped.reason)});
    return result;
}

} // namespace KeldaTool
