// An observer that writes down everything it is told, an event a line: "PLACES: WHAT". Places are
// the open files, "Fan:3" or, in a file that line 3 includes, "Fan:3>Shared:1".
#pragma once

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include <KeldaBase/LoadObserver.h>
#include <KeldaBase/MountFileInfoTypes.h>

#include "MountRecords.h"
#include "PreinitMaps.h"

namespace support {

class Diary : public Kelda::LoadObserver {
  public:
    // In names of files and directories, `root` and the slash behind it are left out.
    explicit Diary(std::string root) : root_(std::move(root) + "/") {}

    std::vector<std::string> const& lines() const { return lines_; }
    // The lines that tell of one of these events, by the word behind the places.
    std::vector<std::string> about(std::vector<std::string> const& events) const {
        std::vector<std::string> found;
        for (auto const& line : lines_) {
            auto const what = line.substr(line.find(": ") + 2);
            if (std::find(events.begin(), events.end(), what.substr(0, what.find(' '))) !=
                events.end())
                found.push_back(line);
        }
        return found;
    }
    void clear() { lines_.clear(); }

    void fileOpened(Rook::String const& directory, Kelda::Places places) override {
        note(places, "opened in '" + shortened(directory.view()) + "'");
    }
    void fileClosed(Kelda::Places places) override { note(places, "closed"); }
    void fileSkipped(Rook::String const& directory, std::string_view name,
                     Kelda::SkipReason reason) override {
        note({}, "skipped " + shortened(directory.view()) + "/" + std::string(name) + " for " +
                     nameOf(reason));
    }
    void preinitLine(Kelda::PreinitLine const& line, Kelda::Places places) override {
        note(places, "preinit " + text(line.path) + " " + text(line.type) + " " +
                         support::nameOf(line.attr) + (line.isConfig ? " CONFIG" : ""));
    }
    void mountLine(Kelda::MountLine const& line, Kelda::Places places) override {
        note(places,
             "mount " + std::string(line.writtenPath) + "," + std::string(line.writtenType) + "," +
                 std::string(line.flags) + " = " + text(line.path) + "," + text(line.type) +
                 (line.isRefused ? " refused" : "") + (line.isConditional ? " conditional" : ""));
    }
    void recordChanged(Rook::String const& path, Kelda::MountArgs const* before,
                       Kelda::MountArgs const& after, Kelda::Places places) override {
        note(places, "record " + text(path) + ": " +
                         (before == nullptr ? "(none)" : shown(*before)) + " -> " + shown(after));
    }
    void flagsInherited(Rook::String const& path, Rook::String const& parent,
                        Fen::MountTable::Flags before, Fen::MountTable::Flags after) override {
        note({}, "inherited " + text(path) + " from '" + text(parent) + "': " + letters(before) +
                     " -> " + letters(after));
    }
    void tokenBound(Rook::String const& token, Rook::String const& value,
                    Kelda::Places places) override {
        note(places, "token " + text(token) + " = " + text(value));
    }
    void aliasDefined(Rook::String const& name, std::string_view expression,
                      Rook::String const& value, Kelda::Places places) override {
        note(places, "alias " + text(name) + " = " + std::string(expression) + " = " + text(value));
    }
    void aliasUsed(Rook::String const& name, Rook::String const& value,
                   Kelda::Places places) override {
        note(places, "used " + text(name) + " = " + text(value));
    }
    void groupOpened(std::string_view name, unsigned char priority, Kelda::Places places) override {
        note(places, "group " + std::string(name) + " " + std::to_string(priority));
    }
    void included(std::string_view pattern, int files, Kelda::Places places) override {
        note(places, "included " + std::string(pattern) + " " + std::to_string(files));
    }
    void keywordLine(std::string_view keyword, std::string_view line,
                     Kelda::Places places) override {
        note(places, "keyword " + std::string(keyword) + " in '" + std::string(line) + "'");
    }

  private:
    static std::string text(Rook::String const& value) { return std::string(value.view()); }
    static std::string letters(Fen::MountTable::Flags flags) {
        return text(KeldaUtil::mountTableFlagsToString(flags));
    }
    static std::string nameOf(Kelda::SkipReason reason) {
        constexpr char const* names[] = {"semicolon", "backup", "loadCheck", "exclusion"};
        return names[static_cast<std::size_t>(reason)];
    }
    std::string shortened(std::string_view name) const {
        return std::string(name.starts_with(root_) ? name.substr(root_.size()) : name);
    }
    void note(Kelda::Places places, std::string const& what) {
        std::string line;
        for (auto const& place : places)
            line += (line.empty() ? "" : ">") + shortened(place.file.view()) + ":" +
                    std::to_string(place.line);
        lines_.push_back(line + ": " + what);
    }

    std::string root_;
    std::vector<std::string> lines_;
};

} // namespace support
