// The answer of WhoAnswer.h, written out.
#include "who/WhoAnswer.h"

#include <algorithm>
#include <memory>
#include <sstream>
#include <unordered_set>

#include <KeldaBase/MountFileInfo.h>
#include <KeldaUtil/MountFlags.h>
#include <fmt/format.h>

#include "JsonWriter.h"
#include "NearestPath.h"
#include "Table.h"
#include "Text.h"
#include "database/findings/SourceText.h"
#include "database/paths/PathPattern.h"

namespace KeldaTool {
namespace {

using KeldaDatabase::Device;
using KeldaDatabase::PathPattern;
using KeldaDatabase::Place;

// Lines as an editor counts them.
class EditorLines {
  public:
    explicit EditorLines(Device const& device) : device_(device), texts_(device.files.size()) {}

    std::int32_t of(Place const& place) {
        auto& text = texts_[place.file];
        if (text == nullptr)
            text = std::make_unique<KeldaDatabase::SourceText>(
                KeldaDatabase::SourceText::ofFile(device_.pathOf(place)));
        return text->editorLine(place.line);
    }

  private:
    Device const& device_;
    std::vector<std::unique_ptr<KeldaDatabase::SourceText>> texts_;
};

std::string flagText(Fen::MountTable::Flags flags) {
    return textOf(KeldaUtil::mountTableFlagsToString(flags));
}

std::string totals(WhoAnswer const& answer) {
    std::unordered_set<std::uint32_t> agents;
    std::unordered_set<Rook::String> paths;
    for (auto const& row : answer.rows) {
        agents.insert(row.agent);
        paths.insert(row.path);
    }
    return fmt::format("{}: {} by {}\n", counted(answer.rows.size(), "mount"),
                       counted(paths.size(), "path"), counted(agents.size(), "agent"));
}

class Document {
  public:
    explicit Document(Device const& device) : device_(device), lines_(device) {}

    std::string of(WhoQuestion const& question, WhoAnswer const& answer,
                   std::optional<std::string> const& name) {
        json_.beginObject();
        if (name)
            json_.member("device", jsonText(*name));
        json_.member("path", jsonText(question.path));
        json_.member("flag", jsonText(question.flags));
        json_.member("type", jsonText(question.type));
        json_.key("mounts");
        json_.beginArray();
        for (auto const& row : answer.rows)
            write(row);
        json_.endArray();
        json_.endObject();
        return json_.take();
    }

  private:
    void write(WhoRow const& row) {
        json_.beginObject();
        json_.member("agent", jsonText(device_.agents[row.agent].name.view()));
        json_.member("path", jsonText(row.path.view()));
        json_.member("type", jsonText(row.type.view()));
        json_.member("flags", flagText(row.flags));
        json_.key("places");
        json_.beginArray();
        for (auto const line : row.lines)
            write(device_.mounts[line]);
        json_.endArray();
        json_.endObject();
    }

    void write(KeldaDatabase::Mount const& mount) {
        json_.beginObject();
        write(mount.place);
        json_.member("flags", flagText(mount.flags));
        json_.key("includedFrom");
        json_.beginArray();
        for (auto include = mount.place.include; include != KeldaDatabase::none;
             include = device_.includes[include].place.include) {
            json_.beginObject();
            write(device_.includes[include].place);
            json_.endObject();
        }
        json_.endArray();
        json_.endObject();
    }

    void write(Place const& place) {
        json_.member("file", jsonText(device_.pathOf(place)));
        json_.member("line", lines_.of(place));
    }

    Device const& device_;
    EditorLines lines_;
    JsonWriter json_;
};

// " with the flags 'rw' and the type 'Sys::*'"
std::string conditionsOf(WhoQuestion const& question) {
    std::string text;
    if (!question.flags.empty())
        text = fmt::format(" with the flag{} '{}'", question.flags.size() == 1 ? "" : "s",
                           question.flags);
    if (!question.type.empty())
        text += fmt::format(" {} the type '{}'", text.empty() ? "with" : "and",
                            printable(question.type));
    return text;
}

std::string withoutConditions(WhoQuestion const& question, std::size_t mounts) {
    auto const* const options = question.type.empty()    ? "--flag"
                                : question.flags.empty() ? "--type"
                                                         : "--flag and --type";
    return fmt::format("; there {} {} without {}", mounts == 1 ? "is" : "are",
                       counted(mounts, "mount"), options);
}

// Why nobody mounts a path that is no pattern, or what may have been meant by it.
std::string hintFor(Device const& device, PathPattern const& wanted, std::string const& path) {
    for (auto const& declared : device.preinits)
        if (wanted.matches(Kelda::MountFileInfo::wildcardPath(declared.path).view()))
            return fmt::format(", which {}:{} declares", printable(device.pathOf(declared.place)),
                               EditorLines(device).of(declared.place));
    NearestPath nearest(path);
    auto const everythingBelow = path + (path.ends_with('/') ? "**" : "/**");
    PathPattern const below(everythingBelow);
    bool anyIsBelow = false;
    for (auto const& mount : device.mounts)
        if (isMounted(mount)) {
            nearest.consider(mount.path.view());
            anyIsBelow = anyIsBelow || below.matches(mount.path.view());
        }
    if (auto const meant = nearest.nearest())
        return fmt::format("; did you mean '{}'?", printable(*meant));
    if (anyIsBelow)
        return fmt::format("; below it, paths are mounted: see '{}'", printable(everythingBelow));
    return "";
}

} // namespace

std::string whoTable(Device const& device, WhoAnswer const& answer, bool colour) {
    EditorLines lines(device);
    Table table({"AGENT", "PATH", "TYPE", "FLAGS", "PLACE"});
    for (auto const& row : answer.rows) {
        auto const& place = device.mounts[row.decisiveLine].place;
        table.addRow({textOf(device.agents[row.agent].name), textOf(row.path), textOf(row.type),
                      flagText(row.flags),
                      fmt::format("{}:{}", device.pathOf(place), lines.of(place))});
    }
    return table.text(colour) + "\n" + totals(answer);
}

std::string whoDocument(Device const& device, WhoQuestion const& question, WhoAnswer const& answer,
                        std::optional<std::string> const& name) {
    return Document(device).of(question, answer, name);
}

std::string inOneLine(std::string const& document) {
    std::istringstream lines(document);
    std::string text;
    for (std::string line; std::getline(lines, line);) {
        // Strings hold no line ends, so blanks at the start of a line only indent it.
        text += line.substr(std::min(line.find_first_not_of(' '), line.size()));
        if (text.ends_with(','))
            text += ' ';
    }
    return text + "\n";
}

std::string askedFor(WhoQuestion const& question, bool isFull) {
    return fmt::format("{}'{}'{}",
                       PathPattern(question.path).isLiteral() ? "" : "a path that matches ",
                       printable(question.path), isFull ? conditionsOf(question) : "");
}

std::string nobodyText(Device const& device, WhoQuestion const& question, WhoAnswer const& answer) {
    PathPattern const wanted(question.path);
    auto text = fmt::format("kelda: no agent mounts {}", askedFor(question, answer.leftOut > 0));
    if (answer.leftOut > 0)
        text += withoutConditions(question, answer.leftOut);
    else if (wanted.isLiteral())
        text += hintFor(device, wanted, question.path);
    return text + "\n";
}

} // namespace KeldaTool
