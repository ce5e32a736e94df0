// Two devices in temporary directories, and what is different between them, as text.
#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <fmt/format.h>

#include "CleanEnvironment.h"
#include "TemporaryDirectory.h"
#include "database/DatabaseMountFileInfo.h"
#include "database/diff/Difference.h"

namespace support {

// Texts by file, "preinit/P" or "profiles/A".
using FileTexts = std::map<std::string, std::string>;

// The files of a device that has the folders "preinit" and "profiles".
inline FileTexts filesOf(std::filesystem::path const& device) {
    FileTexts files;
    for (auto const* const folder : {"preinit", "profiles"})
        for (auto const& entry : std::filesystem::directory_iterator(device / folder)) {
            std::ifstream stream(entry.path(), std::ios::binary);
            files[fmt::format("{}/{}", folder, entry.path().filename().string())] =
                std::string(std::istreambuf_iterator<char>(stream), {});
        }
    return files;
}

// In one file, a text that stands there once is another one. No text to replace: the file is new.
// None at all: the file is gone.
struct FileEdit {
    std::string file;
    std::string from;
    std::string to;
};

inline void replaceOnce(std::string& text, std::string_view from, std::string_view to) {
    auto const at = text.find(from);
    if (from.empty() || at == std::string::npos || text.find(from, at + 1) != std::string::npos)
        throw std::invalid_argument(fmt::format("'{}' does not stand once in: {}", from, text));
    text.replace(at, from.size(), to);
}

inline FileTexts edited(FileTexts files, std::vector<FileEdit> const& edits) {
    for (auto const& edit : edits)
        if (!edit.from.empty())
            replaceOnce(files.at(edit.file), edit.from, edit.to);
        else if (!edit.to.empty())
            files[edit.file] = edit.to;
        else if (files.erase(edit.file) == 0)
            throw std::invalid_argument(fmt::format("there is no file {}", edit.file));
    return files;
}

// A device on disk, with a parser that is ready for differenceOf.
class FiledDevice {
  public:
    explicit FiledDevice(FileTexts const& files) {
        directory_.makeDirectory("preinit");
        directory_.makeDirectory("profiles");
        for (auto const& [name, text] : files)
            directory_.write(name, text);
        reload();
    }

    KeldaDatabase::DatabaseMountFileInfo& parser() { return *parser_; }
    std::string preinitDir() const { return (directory_ / "preinit").string(); }
    std::string profileDir() const { return (directory_ / "profiles").string(); }
    TemporaryDirectory const& directory() const { return directory_; }

    // A new parser, which has not loaded yet.
    void reload() {
        parser_ =
            std::make_unique<KeldaDatabase::DatabaseMountFileInfo>(preinitDir(), profileDir());
        parser_->numberedTokensIs(true);
    }
    // A text of the device without the name of its temporary directory.
    std::string relative(std::string text) const {
        auto const prefix = directory_.string() + "/";
        for (auto at = text.find(prefix); at != std::string::npos; at = text.find(prefix, at))
            text.erase(at, prefix.size());
        return text;
    }

  private:
    TemporaryDirectory directory_;
    std::unique_ptr<KeldaDatabase::DatabaseMountFileInfo> parser_;
};

class ComparedDevices {
  public:
    ComparedDevices(FileTexts const& before, FileTexts const& after)
        : before_(before), after_(after) {}

    FiledDevice& before() { return before_; }
    FiledDevice& after() { return after_; }

    KeldaDatabase::Difference difference() {
        return KeldaDatabase::differenceOf(before_.parser(), after_.parser());
    }
    // The other way round: what it takes to have the first device again.
    KeldaDatabase::Difference undone() {
        return KeldaDatabase::differenceOf(after_.parser(), before_.parser());
    }
    std::vector<std::string> changes() { return shown(difference()); }

    // "KIND CLASS by CAUSE: 'BEFORE' -> 'AFTER', OLD PLACES => NEW PLACES: PATH [AGENTS], ...", in
    // the order of the difference; "follows" behind the class where it does.
    std::vector<std::string> shown(KeldaDatabase::Difference const& difference) const {
        std::vector<std::string> texts;
        for (auto const& change : difference.changes)
            texts.push_back(shown(change));
        return texts;
    }
    std::string shown(KeldaDatabase::Change const& change) const {
        return fmt::format("{} {}{} by {}: '{}' -> '{}', {} => {}: {}", nameOf(change.kind),
                           nameOf(change.severity), change.follows ? " follows" : "",
                           nameOf(change.cause), relative(change.before), relative(change.after),
                           shown(change.oldPlaces), shown(change.newPlaces), shown(change.paths));
    }
    // "FILE:LINE FILE:LINE"; "-" for none.
    std::string shown(std::vector<KeldaDatabase::StoryPlace> const& places) const {
        std::string text;
        for (auto const& place : places)
            text +=
                fmt::format("{}{}:{}", text.empty() ? "" : " ", relative(place.file), place.line);
        return text.empty() ? "-" : text;
    }

  private:
    static std::string shown(std::vector<KeldaDatabase::ChangedPath> const& paths) {
        std::string text;
        for (auto const& each : paths)
            text +=
                fmt::format("{}{}[{}]", text.empty() ? "" : ", ",
                            each.path.empty() ? "" : each.path + " ", fmt::join(each.agents, " "));
        return text;
    }
    std::string relative(std::string text) const {
        return before_.relative(after_.relative(std::move(text)));
    }

    CleanEnvironment environment_;
    FiledDevice before_;
    FiledDevice after_;
};

} // namespace support
