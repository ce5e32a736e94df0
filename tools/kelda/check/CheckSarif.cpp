// The findings as a SARIF 2.1.0 log.
//
// What stands between braces in a message is a placeholder to a reader of SARIF, and "[TEXT](URI)"
// is a link; text that comes from files must be neither.
#include "check/CheckFormats.h"

#include <algorithm>
#include <cstdint>
#include <map>

#include <fmt/format.h>

#include "JsonDocument.h"

namespace KeldaTool {
namespace {

using KeldaDatabase::nameOf;
using KeldaDatabase::Rule;

constexpr char const* schemaUri =
    "https://docs.oasis-open.org/sarif/sarif/v2.1.0/errata01/os/schemas/sarif-schema-2.1.0.json";
// To be changed with what is hashed, so that nobody compares fingerprints of two kinds.
constexpr char const* fingerprintName = "keldaFinding/v1";

bool isUnreserved(char byte) {
    return (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'Z') ||
           (byte >= 'a' && byte <= 'z') ||
           std::string_view("-._~").find(byte) != std::string_view::npos;
}

// Names are bytes, and so all that is no plain letter or digit is written byte by byte.
std::string uriOf(std::string const& path) {
    std::string uri = path.starts_with('/') ? "file://" : "";
    for (char const byte : path)
        if (isUnreserved(byte) || byte == '/')
            uri += byte;
        else
            uri += fmt::format("%{:02X}", static_cast<unsigned char>(byte));
    return uri;
}

std::string withDoubledBraces(std::string_view text) {
    std::string doubled;
    for (char const byte : text)
        doubled.append(byte == '{' || byte == '}' ? 2 : 1, byte);
    return doubled;
}

// A link is one only if nothing stands between its two parts.
std::string withoutLinks(std::string_view text) {
    std::string plain;
    for (std::size_t i = 0; i < text.size(); ++i) {
        plain += text[i];
        if (text.substr(i, 2) == "](")
            plain += ' ';
    }
    return plain;
}

std::string withoutLastNewlines(std::string_view text) {
    return std::string(text.substr(0, text.find_last_not_of('\n') + 1));
}

Json messageText(std::string_view text) {
    return jsonText(withDoubledBraces(withoutLinks(withoutLastNewlines(text))));
}

Json message(std::string_view text) {
    return {{"text", messageText(text)}};
}

Json region(SourcePlace const& place) {
    Json region{{"startLine", place.line}};
    if (place.column < 1)
        return region;
    region["startColumn"] = place.column;
    region["endColumn"] = std::int64_t{place.column} + std::max(place.width, 0);
    return region;
}

Json physicalLocation(SourcePlace const& place) {
    Json location{{"artifactLocation", {{"uri", uriOf(place.file)}}}};
    if (place.line > 0)
        location["region"] = region(place);
    return location;
}

// An array of the place, empty for no file.
Json locations(SourcePlace const& place) {
    auto array = Json::array();
    if (!place.file.empty())
        array.push_back({{"physicalLocation", physicalLocation(place)}});
    return array;
}

void addRelated(Json& array, SourcePlace const& place, std::string_view text) {
    Json location{{"id", array.size()}};
    if (!place.file.empty())
        location["physicalLocation"] = physicalLocation(place);
    location["message"] = message(text);
    array.push_back(location);
}

Json relatedLocations(CheckedFinding const& finding) {
    auto array = Json::array();
    for (auto const& related : finding.related)
        addRelated(array, related.place, related.text);
    for (auto const& include : finding.includedFrom)
        addRelated(array, {include.file, include.line, 0, 0, ""}, "included from here");
    return array;
}

// FNV-1a: the same number on every machine, in every version.
std::uint64_t hashOf(std::string_view bytes) {
    std::uint64_t hash = 0xcbf29ce484222325U;
    for (char const byte : bytes)
        hash = (hash ^ static_cast<unsigned char>(byte)) * 0x100000001b3U;
    return hash;
}

// Tells findings from each other whatever lines are added above them: which of those of a rule
// that say the same about the same file it is.
class Fingerprints {
  public:
    std::string next(CheckedFinding const& finding) {
        std::string key(finding.rule->name);
        for (auto const& part : {finding.place.file, finding.message})
            (key += '\0') += part;
        return fmt::format("{:016x}:{}", hashOf(key), ++seen_[key]);
    }

  private:
    std::map<std::string, unsigned> seen_;
};

std::string textWithHint(CheckedFinding const& finding) {
    auto const text = withoutLastNewlines(finding.message);
    return finding.hint.empty() ? text : text + "\nhint: " + finding.hint;
}

Json resultOf(CheckedFinding const& finding, std::string const& fingerprint) {
    Json result{{"ruleId", finding.rule->name},
                {"ruleIndex", finding.rule - KeldaDatabase::allRules().data()},
                {"level", nameOf(finding.severity)},
                {"message", message(textWithHint(finding))},
                {"locations", locations(finding.place)},
                {"relatedLocations", relatedLocations(finding)},
                {"partialFingerprints", {{fingerprintName, fingerprint}}}};
    for (auto const* const member : {"locations", "relatedLocations"})
        if (result[member].empty())
            result.erase(member);
    if (!finding.agents.empty())
        result["properties"] = Json{{"agents", jsonTexts(finding.agents)}};
    return result;
}

Json results(CheckResult const& result) {
    auto array = Json::array();
    Fingerprints fingerprints;
    for (auto const& finding : result.findings)
        array.push_back(resultOf(finding, fingerprints.next(finding)));
    return array;
}

std::string_view explanationOf(Rule const& rule) {
    return rule.explanation.empty() ? rule.summary : rule.explanation;
}

std::string_view firstParagraph(std::string_view text) {
    return text.substr(0, text.find("\n\n"));
}

// Text of ours, whose paragraphs Markdown has as well, with all that would be a mark escaped.
std::string escapedForMarkdown(std::string_view text) {
    std::string escaped;
    for (char const byte : text) {
        if (std::string_view("\\`*_[]<>#&~|").find(byte) != std::string_view::npos)
            escaped += '\\';
        escaped += byte;
    }
    return escaped;
}

std::string exampleInMarkdown(std::string_view heading, std::string_view device) {
    if (device.empty())
        return "";
    std::string text = fmt::format("\n\n{}\n\n    ", heading);
    for (char const byte : withoutLastNewlines(device))
        text += byte == '\n' ? "\n    " : std::string(1, byte);
    return text;
}

Json help(Rule const& rule) {
    auto const explanation = explanationOf(rule);
    return {{"text", messageText(explanation)},
            {"markdown", messageText(escapedForMarkdown(explanation) +
                                     exampleInMarkdown("Wrong:", rule.failing) +
                                     exampleInMarkdown("Right:", rule.passing))}};
}

Json ruleDescriptor(Rule const& rule) {
    return {{"id", rule.name},
            {"shortDescription", message(rule.summary)},
            {"fullDescription", message(firstParagraph(explanationOf(rule)))},
            {"help", help(rule)},
            {"defaultConfiguration", {{"level", nameOf(rule.severity)}}}};
}

Json rules() {
    auto array = Json::array();
    for (auto const& rule : KeldaDatabase::allRules())
        array.push_back(ruleDescriptor(rule));
    return array;
}

Json tool() {
    Json const driver{{"name", "kelda"}, {"semanticVersion", KELDA_VERSION}, {"rules", rules()}};
    return {{"driver", driver}};
}

Json run(CheckResult const& result) {
    return {{"tool", tool()},
            {"columnKind", "unicodeCodePoints"},
            {"invocations", Json::array({Json{{"executionSuccessful", true}}})},
            {"results", results(result)}};
}

Json logOf(Json const& run) {
    return {{"$schema", schemaUri}, {"version", "2.1.0"}, {"runs", Json::array({run})}};
}

Json notification(std::string const& text) {
    return {{"level", "error"}, {"message", message(text)}};
}

} // namespace

std::string checkSarif(CheckResult const& result) {
    return documentText(logOf(run(result)));
}

std::string checkSarifBegin() {
    auto text = documentText(
        logOf({{"tool", tool()}, {"columnKind", "unicodeCodePoints"}, {"results", Json::array()}}));
    // Up to the bracket that opens the results, the last array of all.
    return text.substr(0, text.rfind("[]") + 1) + "\n";
}

std::string checkSarifResults(CheckResult const& result) {
    std::string text;
    for (auto const& object : results(result))
        text += (text.empty() ? "" : ",\n") + object.dump();
    return text;
}

std::string checkSarifEnd(std::vector<std::string> const& failures) {
    Json invocation{{"executionSuccessful", failures.empty()}};
    for (auto const& failure : failures)
        invocation["toolExecutionNotifications"].push_back(notification(failure));
    return fmt::format("\n],\n\"invocations\": [{}]\n}}]}}\n", invocation.dump());
}

} // namespace KeldaTool
