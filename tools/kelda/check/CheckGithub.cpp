// A workflow command is a line "::COMMAND NAME=VALUE,NAME=VALUE::DATA". What has a meaning of its
// own in data (line ends and the escape character) or in values (also the colon and the comma) is
// written as "%" with two hexadecimal digits.
#include "check/CheckFormats.h"

#include <algorithm>
#include <cstdint>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "Text.h"
#include "check/CheckTextParts.h"

namespace KeldaTool {
namespace {

using KeldaDatabase::Severity;

constexpr std::string_view escapedInData = "%\r\n";
constexpr std::string_view escapedInValues = "%\r\n:,";

std::string escaped(std::string_view text, std::string_view characters) {
    std::string out;
    for (char const c : text)
        out += characters.find(c) == std::string_view::npos
                   ? std::string(1, c)
                   : fmt::format("%{:02X}", static_cast<unsigned char>(c));
    return out;
}

std::string_view commandFor(Severity severity) {
    return severity == Severity::note ? "notice" : nameOf(severity);
}

std::string valuesOf(CheckedFinding const& finding) {
    auto const& place = finding.place;
    std::vector<std::string> values;
    if (!place.file.empty())
        values.push_back("file=" + escaped(printable(place.file), escapedInValues));
    if (!place.file.empty() && place.line > 0)
        values.push_back(fmt::format("line={}", place.line));
    if (!place.file.empty() && place.line > 0 && place.column > 0)
        values.push_back(fmt::format("col={},endColumn={}", place.column,
                                     std::int64_t{place.column} + std::max(place.width, 1)));
    if (finding.rule != nullptr)
        values.push_back("title=" + escaped(finding.rule->name, escapedInValues));
    return fmt::format("{}", fmt::join(values, ","));
}

std::string dataOf(CheckedFinding const& finding) {
    auto text = indentedMessage(finding.message) + "\n" + detailsText(finding, {});
    text.erase(text.find_last_not_of('\n') + 1);
    return escaped(text, escapedInData);
}

std::string commandOf(CheckedFinding const& finding) {
    auto const values = valuesOf(finding);
    return fmt::format("::{}{}{}::{}\n", commandFor(finding.severity), values.empty() ? "" : " ",
                       values, dataOf(finding));
}

} // namespace

std::string checkGithub(CheckResult const& result) {
    std::string text;
    for (auto const& finding : result.findings)
        text += commandOf(finding);
    return text;
}

} // namespace KeldaTool
