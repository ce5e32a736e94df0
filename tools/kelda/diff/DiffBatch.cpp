#include "diff/DiffBatch.h"

#include <algorithm>

#include <fmt/format.h>

#include "Text.h"

namespace KeldaTool {
namespace {

// Without the line end, which stands between the documents.
std::string lineOf(std::string const& document) {
    auto line = diffInOneLine(document);
    line.pop_back();
    return line;
}

std::string errorLine(std::string const& device, std::string const& what) {
    return lineOf(diffErrorJson(device, what));
}

std::string errorLineAlone(std::string const& device, std::string const& what) {
    return diffInOneLine(diffErrorJson(device, what));
}

} // namespace

BatchText DiffBatch::around() const {
    if (format_ == "json")
        return {"{\"schemaVersion\":1,\"devices\":[\n", ",\n", "\n]}\n", errorLine};
    if (format_ == "jsonl")
        return {"", "", "", errorLineAlone};
    return {"", "\n", "", {}};
}

CountedReport DiffBatch::answerOf(DiffResult const& result) const {
    CountedReport answer;
    auto& text = answer.report.results;
    if (format_ == "json")
        text = lineOf(diffJson(result));
    else if (format_ == "jsonl")
        text = diffInOneLine(diffJson(result));
    else
        text = format_ == "markdown" ? diffMarkdown(result) : diffText(result, colour_);
    auto const counts = result.counts();
    answer.counts.assign(counts.begin(), counts.end());
    answer.counts.push_back(result.difference.changes.empty() ? 0 : 1);
    return answer;
}

Report DiffBatch::end(BatchTotals const& totals) const {
    if (format_ != "text")
        return {};
    ClassCounts counts{};
    std::copy_n(totals.counts.begin(), std::min(totals.counts.size(), counts.size()),
                counts.begin());
    auto const changed = totals.counts.size() > counts.size() ? totals.counts[counts.size()] : 0;
    auto text = fmt::format("{}, {} with changes", counted(totals.devices, "device"), changed);
    if (changed > 0)
        text += fmt::format(" ({})", classesText(counts));
    if (totals.failed > 0)
        text += fmt::format(", {} not compared", totals.failed);
    bool const hasText = totals.failed < totals.devices;
    return {fmt::format("{}{}\n", hasText ? "\n" : "", text), "", ExitStatus::success};
}

} // namespace KeldaTool
