#include "check/CheckFormats.h"

#include <algorithm>

#include <fmt/format.h>

#include "Text.h"
#include "check/CheckSourceLine.h"
#include "check/CheckTextParts.h"

namespace KeldaTool {
namespace {

using KeldaDatabase::Severity;

constexpr std::string_view bold = "\x1b[1m";
constexpr std::string_view boldGreen = "\x1b[1;32m";
constexpr std::string_view reset = "\x1b[0m";

std::string_view colourOf(Severity severity) {
    switch (severity) {
    case Severity::error:
        return "\x1b[1;31m"; // red
    case Severity::warning:
        return "\x1b[1;33m"; // yellow
    case Severity::note:
        break;
    }
    return "\x1b[1;36m"; // cyan
}

std::string painted(std::string_view text, std::string_view colour, TextStyle const& style) {
    return style.colour ? fmt::format("{}{}{}", colour, text, reset) : std::string(text);
}

std::string lineWith(std::size_t indent, std::string_view text) {
    return text.empty() ? std::string() : fmt::format("{:{}}{}\n", "", indent, text);
}

// A line of a file behind its number, and a line with the caret.
std::string sourceLines(SourcePlace const& place, std::size_t indent, TextStyle const& style) {
    if (!style.showSource || place.line <= 0 || place.text.empty())
        return {};
    auto const shown = shownLine(place);
    auto const number = fmt::format("{:>5}", place.line);
    auto lines = lineWith(
        indent, fmt::format("{} |{}{}", number, shown.text.empty() ? "" : " ", shown.text));
    if (shown.underlined > 0)
        lines += lineWith(indent, fmt::format("{:{}} | {:{}}{}", "", number.size(), "", shown.caret,
                                              painted("^" + std::string(shown.underlined - 1, '~'),
                                                      boldGreen, style)));
    return lines;
}

std::string headline(CheckedFinding const& finding, TextStyle const& style) {
    auto message = indentedMessage(finding.message);
    message.insert(std::min(message.find('\n'), message.size()), ruleText(finding));
    auto const severity = fmt::format("{}:", nameOf(finding.severity));
    return fmt::format("{} {} {}\n", painted(placeText(finding.place) + ":", bold, style),
                       painted(severity, colourOf(finding.severity), style), message);
}

std::string relatedText(RelatedPlace const& related, TextStyle const& style) {
    auto const words = messageInOneLine(related.text);
    if (related.place.file.empty())
        return lineWith(2, words);
    auto const place = painted(placeText(related.place) + ":", bold, style);
    return lineWith(2, fmt::format("{} {}", place, words)) + sourceLines(related.place, 2, style);
}

std::string hintText(CheckedFinding const& finding, TextStyle const& style) {
    if (finding.hint.empty())
        return {};
    return lineWith(
        2, fmt::format("{} {}", painted("hint:", bold, style), messageInOneLine(finding.hint)));
}

std::string filesText(CheckResult const& result) {
    std::string text;
    for (auto const& file : result.filesRead)
        text += fmt::format("read {}\n", printable(file));
    for (auto const& [file, reason] : result.filesSkipped)
        text += fmt::format("skipped {}: {}\n", printable(file), printable(reason));
    return text;
}

std::string staleText(CheckResult const& result) {
    std::string text;
    for (auto const& entry : result.staleBaseline)
        text += fmt::format("stale baseline entry: {}\n", printable(entry));
    return text;
}

std::string totals(CheckResult const& result) {
    auto text = fmt::format("{} in {} and {}", severitiesText(severityCounts(result)),
                            counted(result.profiles, "profile"),
                            counted(result.preinitFiles, "preinit file"));
    if (result.suppressed > 0)
        text += fmt::format(", {} allowed by comments", result.suppressed);
    if (result.inBaseline > 0)
        text += fmt::format(", {} in the baseline", result.inBaseline);
    return text + "\n";
}

} // namespace

std::string detailsText(CheckedFinding const& finding, TextStyle const& style) {
    auto text = lineWith(2, includedFromText(finding));
    for (auto const& related : finding.related)
        text += relatedText(related, style);
    return text + hintText(finding, style) + lineWith(2, agentsText(finding));
}

std::string findingText(CheckedFinding const& finding, TextStyle const& style) {
    return headline(finding, style) + sourceLines(finding.place, 0, style) +
           detailsText(finding, style);
}

std::string severitiesText(SeverityCounts const& counts) {
    std::string text;
    for (auto const& [severity, count] : counts)
        if (count > 0)
            text += (text.empty() ? "" : ", ") + counted(count, nameOf(severity));
    return text.empty() ? "no findings" : text;
}

std::string checkText(CheckResult const& result, TextStyle const& style) {
    auto text = filesText(result);
    for (auto const& finding : result.findings)
        text += findingText(finding, style);
    text += staleText(result);
    return text + (text.empty() ? "" : "\n") + totals(result);
}

std::string checkTextOfDevice(std::string const& device, CheckResult const& result,
                              TextStyle const& style) {
    auto const heading = fmt::format("Device {}", printable(device));
    return fmt::format("{}\n{}", painted(heading, bold, style), checkText(result, style));
}

} // namespace KeldaTool
