#include "check/CheckBatch.h"

#include <algorithm>
#include <iterator>

#include <fmt/format.h>

#include "Text.h"
#include "check/CheckTextParts.h"

namespace KeldaTool {
namespace {

using KeldaDatabase::Severity;

std::string nothing() {
    return {};
}

std::string nothingOf(std::string const&, std::string const&) {
    return {};
}

std::string jsonBegin() {
    return "{\"schemaVersion\":1,\"devices\":[\n";
}

std::string jsonEnd() {
    return "\n]}\n";
}

std::string jsonLine(std::string const& device, CheckResult const& result) {
    return checkJsonOfDevice(device, result) + "\n";
}

std::string errorJsonLine(std::string const& device, std::string const& what) {
    return checkErrorJsonOfDevice(device, what) + "\n";
}

// Their paths tell the device.
template <std::string (*format)(CheckResult const&)>
std::string withoutDevice(std::string const&, CheckResult const& result) {
    return format(result);
}

// A format for programs: what stands around the answers, that of a device, and what takes its place
// for one that could not be checked.
struct DeviceFormat {
    char const* name;
    std::string (*begin)();
    char const* between;
    std::string (*end)();
    std::string (*answer)(std::string const& device, CheckResult const& result);
    std::string (*failure)(std::string const& device, std::string const& what);
};

constexpr DeviceFormat deviceFormats[] = {
    {"concise", nothing, "", nothing, withoutDevice<checkConcise>, nothingOf},
    {"github", nothing, "", nothing, withoutDevice<checkGithub>, nothingOf},
    {"json", jsonBegin, ",\n", jsonEnd, checkJsonOfDevice, checkErrorJsonOfDevice},
    {"jsonl", nothing, "", nothing, jsonLine, errorJsonLine},
    {"junit", checkJunitBegin, "", checkJunitEnd, checkJunitOfDevice, checkJunitError},
    // Its end depends on the failures.
    {"sarif", checkSarifBegin, ",\n", nothing, withoutDevice<checkSarifResults>, nothingOf}};

// Null for "text".
DeviceFormat const* deviceFormatNamed(std::string const& name) {
    auto const* const found =
        std::find_if(std::begin(deviceFormats), std::end(deviceFormats),
                     [&name](DeviceFormat const& format) { return format.name == name; });
    return found == std::end(deviceFormats) ? nullptr : found;
}

enum Count { errors, warnings, notes, devicesWithErrors };

std::string totalsText(BatchTotals const& totals) {
    auto counts = totals.counts;
    counts.resize(devicesWithErrors + 1);
    auto text = fmt::format("{}, {} with errors", counted(totals.devices, "device"),
                            counts[devicesWithErrors]);
    if (totals.failed > 0)
        text += fmt::format(", {} not checked", totals.failed);
    return fmt::format("{}: {}\n", text,
                       severitiesText({{{Severity::error, counts[errors]},
                                        {Severity::warning, counts[warnings]},
                                        {Severity::note, counts[notes]}}}));
}

} // namespace

BatchText CheckBatch::around() {
    BatchText text{"", "\n", ""};
    if (auto const* const format = deviceFormatNamed(format_))
        text = {format->begin(), format->between, format->end()};
    text.failure = [this](std::string const& device, std::string const& what) {
        return failureOf(device, what);
    };
    return text;
}

std::string CheckBatch::failureOf(std::string const& device, std::string const& what) {
    failures_.push_back(fmt::format("{}: {}", device, what));
    auto const* const format = deviceFormatNamed(format_);
    return format == nullptr ? std::string() : format->failure(device, what);
}

CountedReport CheckBatch::answerOf(std::string const& device, CheckResult const& result) const {
    auto const* const format = deviceFormatNamed(format_);
    CountedReport answer;
    answer.report.results = format == nullptr ? checkTextOfDevice(device, result, style_)
                                              : format->answer(device, result);
    for (auto const& [severity, count] : severityCounts(result))
        answer.counts.push_back(count);
    bool const hasErrors = answer.counts[errors] > 0;
    answer.counts.push_back(hasErrors ? 1 : 0);
    answer.report.status = hasErrors ? ExitStatus::failure : ExitStatus::success;
    return answer;
}

Report CheckBatch::end(BatchTotals const& totals) const {
    if (format_ == "sarif")
        return {checkSarifEnd(failures_), "", ExitStatus::success};
    if (format_ != "text" || totals.failed == totals.devices)
        return {};
    return {"\n" + totalsText(totals), "", ExitStatus::success};
}

} // namespace KeldaTool
