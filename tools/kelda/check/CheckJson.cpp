// The findings as JSON. Members may be added to the documents, but are never taken away, and those
// that were there first stay first. check.schema.json describes what is written here.
#include "check/CheckFormats.h"

#include <algorithm>

#include "JsonDocument.h"

namespace KeldaTool {
namespace {

using KeldaDatabase::nameOf;
using KeldaDatabase::Severity;

constexpr int schemaVersion = 1;
constexpr int unknown = -1; // a line or column that there is not

// Where something stands. What a place does not have is unknown, and so is all that lies in it.
struct Position {
    std::int64_t line = unknown;
    std::int64_t column = unknown;
    std::int64_t endColumn = unknown; // the one behind the last character
};

Position positionOf(SourcePlace const& place) {
    Position position;
    if (place.file.empty() || place.line < 1)
        return position;
    position.line = place.line;
    if (place.column < 1)
        return position;
    position.column = place.column;
    position.endColumn = position.column + std::max(place.width, 0);
    return position;
}

Json includedFrom(std::vector<IncludedFrom> const& includes) {
    auto array = Json::array();
    for (auto const& include : includes)
        array.push_back({{"file", jsonText(include.file)},
                         {"line", include.line < 1 ? unknown : include.line}});
    return array;
}

Json relatedPlaces(std::vector<RelatedPlace> const& places) {
    auto array = Json::array();
    for (auto const& related : places) {
        auto const position = positionOf(related.place);
        array.push_back({{"file", jsonText(related.place.file)},
                         {"line", position.line},
                         {"column", position.column},
                         {"message", jsonText(related.text)}});
    }
    return array;
}

// Adds the members of a finding to an object.
void addFinding(Json& object, CheckedFinding const& finding) {
    auto const position = positionOf(finding.place);
    object["severity"] = nameOf(finding.severity);
    object["rule"] = finding.rule->name;
    object["file"] = jsonText(finding.place.file);
    object["line"] = position.line;
    object["column"] = position.column;
    object["message"] = jsonText(finding.message);
    object["endColumn"] = position.endColumn;
    if (position.line != unknown && finding.reportedLine > 0 &&
        finding.reportedLine != position.line)
        object["reportedLine"] = finding.reportedLine;
    if (!finding.hint.empty())
        object["hint"] = jsonText(finding.hint);
    object["includedFrom"] = includedFrom(finding.includedFrom);
    object["related"] = relatedPlaces(finding.related);
    object["agents"] = jsonTexts(finding.agents);
}

Json findings(CheckResult const& result) {
    auto array = Json::array();
    for (auto const& finding : result.findings)
        addFinding(array.emplace_back(Json::object()), finding);
    return array;
}

Json counts(CheckResult const& result) {
    auto object = Json::object();
    for (auto const severity : {Severity::error, Severity::warning, Severity::note})
        object[std::string(nameOf(severity))] = result.count(severity);
    return object;
}

Json skippedFiles(std::vector<CheckResult::Skipped> const& files) {
    auto array = Json::array();
    for (auto const& skipped : files)
        array.push_back({{"file", jsonText(skipped.file)}, {"reason", jsonText(skipped.reason)}});
    return array;
}

void addFileCounts(Json& object, CheckResult const& result) {
    object["schemaVersion"] = schemaVersion;
    object["preinitFiles"] = result.preinitFiles;
    object["profiles"] = result.profiles;
}

void addTotals(Json& object, CheckResult const& result) {
    object["suppressed"] = result.suppressed;
    object["inBaseline"] = result.inBaseline;
    object["staleBaseline"] = jsonTexts(result.staleBaseline);
    object["counts"] = counts(result);
    if (!result.filesRead.empty())
        object["filesRead"] = jsonTexts(result.filesRead);
    if (!result.filesSkipped.empty())
        object["filesSkipped"] = skippedFiles(result.filesSkipped);
}

Json documentOf(CheckResult const& result) {
    Json document;
    addFileCounts(document, result);
    document["findings"] = findings(result);
    addTotals(document, result);
    return document;
}

Json errorDocument(std::string const& message) {
    Json document;
    document["schemaVersion"] = schemaVersion;
    document["error"] = Json{{"message", jsonText(message)}};
    return document;
}

// The device comes first, so that a reader of many documents sees it without looking for it.
std::string textOfDevice(std::string const& device, Json const& document) {
    Json object{{"device", jsonText(device)}};
    object.update(document);
    return object.dump();
}

std::string lineOf(Json const& document) {
    return document.dump() + "\n";
}

} // namespace

std::string checkJson(CheckResult const& result) {
    return documentText(documentOf(result));
}

std::string checkJsonLines(CheckResult const& result) {
    std::string lines;
    for (auto const& finding : result.findings) {
        Json object{{"type", "finding"}};
        addFinding(object, finding);
        lines += lineOf(object);
    }
    Json summary{{"type", "summary"}};
    addFileCounts(summary, result);
    addTotals(summary, result);
    return lines + lineOf(summary);
}

std::string checkErrorJson(std::string const& message) {
    return documentText(errorDocument(message));
}

std::string checkJsonOfDevice(std::string const& device, CheckResult const& result) {
    return textOfDevice(device, documentOf(result));
}

std::string checkErrorJsonOfDevice(std::string const& device, std::string const& message) {
    return textOfDevice(device, errorDocument(message));
}

} // namespace KeldaTool
