#include "diff/DiffFormats.h"

#include <utility>

#include "JsonDocument.h"
#include "JsonWriter.h"

namespace KeldaTool {
namespace {

using KeldaDatabase::Change;
using KeldaDatabase::StoryPlace;

constexpr int schemaVersion = 1;

class Document {
  public:
    std::string of(DiffResult const& result) {
        auto const& difference = result.difference;
        auto const worst = difference.worst();
        json_.beginObject();
        begin(result.device);
        write("old", result.before);
        write("new", result.after);
        json_.member("agentsBefore", difference.agentsBefore);
        json_.member("agentsAfter", difference.agentsAfter);
        json_.member("worst", worst ? Json(nameOf(*worst)) : Json(nullptr));
        writeCounts(result);
        json_.key("changes");
        json_.beginArray();
        for (auto const& change : difference.changes)
            write(change);
        json_.endArray();
        json_.endObject();
        return json_.take();
    }

    std::string ofError(std::string const& device, std::string const& message) {
        json_.beginObject();
        begin(device);
        json_.key("error");
        json_.beginObject();
        json_.member("message", jsonText(message));
        json_.endObject();
        json_.endObject();
        return json_.take();
    }

  private:
    // The device comes first, so that a reader of many documents sees it without looking for it.
    void begin(std::string const& device) {
        if (!device.empty())
            json_.member("device", jsonText(device));
        json_.member("schemaVersion", schemaVersion);
    }

    void write(std::string_view name, DeviceFolders const& folders) {
        json_.key(name);
        json_.beginObject();
        json_.member("preinit", jsonText(folders.preinitDir));
        json_.member("profiles", jsonText(folders.profileDir));
        json_.endObject();
    }

    void writeCounts(DiffResult const& result) {
        auto const counts = result.counts();
        json_.key("counts");
        json_.beginObject();
        for (auto const severity : changeClasses)
            json_.member(nameOf(severity), counts[static_cast<std::size_t>(severity)]);
        json_.endObject();
        json_.key("leftOut");
        json_.beginObject();
        json_.member("lesser", result.lesser);
        json_.member("following", result.following);
        json_.endObject();
    }

    void write(Change const& change) {
        json_.beginObject();
        json_.member("kind", nameOf(change.kind));
        json_.member("class", nameOf(change.severity));
        json_.member("cause", nameOf(change.cause));
        json_.member("follows", change.follows);
        json_.member("before", jsonText(change.before));
        json_.member("after", jsonText(change.after));
        write("oldPlaces", change.oldPlaces);
        write("newPlaces", change.newPlaces);
        writePaths(change);
        writeMounts(change);
        json_.endObject();
    }

    void write(std::string_view name, std::vector<StoryPlace> const& places) {
        json_.key(name);
        json_.beginArray();
        for (auto const& place : places) {
            json_.beginObject();
            writeLine(place.file, place.line);
            json_.member("text", jsonText(place.text));
            json_.key("includedFrom");
            json_.beginArray();
            for (auto const& from : place.from) {
                json_.beginObject();
                writeLine(from.file, from.line);
                json_.endObject();
            }
            json_.endArray();
            json_.endObject();
        }
        json_.endArray();
    }

    void writeLine(std::string const& file, std::int32_t line) {
        json_.member("file", jsonText(file));
        json_.member("line", line > 0 ? line : -1);
    }

    void writePaths(Change const& change) {
        json_.key("paths");
        json_.beginArray();
        for (auto const& path : change.paths) {
            json_.beginObject();
            json_.member("path", jsonText(path.path));
            json_.member("type", jsonText(path.type));
            json_.key("agents");
            json_.beginArray();
            for (auto const& agent : path.agents)
                json_.value(jsonText(agent));
            json_.endArray();
            json_.endObject();
        }
        json_.endArray();
    }

    void writeMounts(Change const& change) {
        json_.key("mounts");
        json_.beginArray();
        for (auto const& mount : change.mounts) {
            json_.beginObject();
            json_.member("agent", jsonText(mount.agent));
            json_.member("path", jsonText(mount.path));
            json_.member("type", jsonText(mount.type));
            json_.member("flags", jsonText(mount.flags));
            json_.endObject();
        }
        json_.endArray();
    }

    JsonWriter json_;
};

} // namespace

std::string diffJson(DiffResult const& result) {
    return Document().of(result);
}

std::string diffErrorJson(std::string const& device, std::string const& message) {
    return Document().ofError(device, message);
}

// A text of JSON holds no line end, so that all of them are of the layout.
std::string diffInOneLine(std::string const& document) {
    std::string line;
    bool isIndentation = false;
    for (char const c : document) {
        isIndentation = c == '\n' || (isIndentation && c == ' ');
        if (!isIndentation)
            line += c;
    }
    line += '\n';
    return line;
}

} // namespace KeldaTool
