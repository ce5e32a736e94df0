#include "who/WhoBatch.h"

#include <stdexcept>

#include <fmt/format.h>

#include "JsonDocument.h"
#include "Text.h"
#include "UnreadableFolder.h"
#include "database/DatabaseMountFileInfo.h"
#include "devices/DeviceTree.h"

namespace KeldaTool {
namespace {

enum Count { mounts, devicesWithMounts };

std::string faultNoteOf(std::string const& device, KeldaDatabase::DatabaseMountFileInfo& parser) {
    if (parser.device().faults.empty())
        return "";
    return fmt::format("kelda: note: {}: {} in the files; see 'kelda check'\n", printable(device),
                       counted(parser.findings().size(), "fault"));
}

std::string errorDocument(std::string const& device, std::string const& what) {
    Json const error{{"file", ""}, {"line", -1}, {"message", jsonText(what)}};
    return inOneLine(documentText(Json{{"device", jsonText(device)}, {"error", error}}));
}

std::string withoutNewline(std::string text) {
    text.erase(text.find_last_not_of('\n') + 1);
    return text;
}

} // namespace

BatchText WhoBatch::around() const {
    if (format_ == "json")
        return {"{\"devices\": [\n", ",\n", "\n]}\n",
                [](std::string const& device, std::string const& what) {
                    return withoutNewline(errorDocument(device, what));
                }};
    if (format_ == "jsonl")
        return {"", "", "", errorDocument};
    return {"", "\n", ""};
}

CountedReport WhoBatch::answerOf(std::string const& device) const {
    auto const folders = foldersOf(device);
    KeldaDatabase::DatabaseMountFileInfo parser(folders.preinitDir, folders.profileDir);
    if (auto const what = unreadableFolder(parser.device()))
        throw std::runtime_error(*what);
    auto const answer = askWho(parser.device(), question_);
    return {{resultsOf(device, parser.device(), answer), faultNoteOf(device, parser),
             ExitStatus::success},
            {answer.rows.size(), answer.rows.empty() ? 0U : 1U}};
}

std::string WhoBatch::resultsOf(std::string const& name, KeldaDatabase::Device const& device,
                                WhoAnswer const& answer) const {
    if (format_ != "table") {
        auto const line = inOneLine(whoDocument(device, question_, answer, name));
        return format_ == "json" ? withoutNewline(line) : line;
    }
    // Most devices may well have nothing to do with the path.
    if (answer.rows.empty())
        return {};
    return fmt::format("Device {}\n{}", printable(name), whoTable(device, answer, colour_));
}

Report WhoBatch::end(BatchTotals const& totals) const {
    auto counts = totals.counts;
    counts.resize(devicesWithMounts + 1);
    auto const asked = totals.devices - totals.failed;
    auto const devices = counted(asked, "device");
    if (asked == 0)
        return {};
    if (counts[mounts] == 0)
        return {"", fmt::format("kelda: no agent of {} mounts {}\n", devices, askedFor(question_)),
                ExitStatus::failure};
    if (format_ != "table")
        return {};
    return {fmt::format("\n{} on {} of {}\n", counted(counts[mounts], "mount"),
                        counts[devicesWithMounts], devices),
            "", ExitStatus::success};
}

} // namespace KeldaTool
