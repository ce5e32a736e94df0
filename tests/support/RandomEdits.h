// Random edits of the files of a device. The same seed always makes the same edits.
#pragma once

#include <algorithm>
#include <cstdint>
#include <functional>
#include <iterator>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "ComparedDevices.h"
#include "RandomFiles.h"

namespace support {

// The lines of a text, each with its end; continued lines are one.
inline std::vector<std::string> logicalLines(std::string const& text) {
    std::vector<std::string> lines;
    bool isContinued = false;
    for (std::size_t begin = 0; begin < text.size();) {
        auto const at = text.find('\n', begin);
        auto const end = at == std::string::npos ? text.size() : at + 1;
        auto const line = text.substr(begin, end - begin);
        if (isContinued)
            lines.back() += line;
        else
            lines.push_back(line);
        isContinued = line.ends_with("\\\n");
        begin = end;
    }
    return lines;
}

inline std::string textOfLines(std::vector<std::string> const& lines) {
    std::string text;
    for (auto const& line : lines)
        text += line;
    return text;
}

// What both kinds of edits are made of.
class EditedFiles {
  public:
    EditedFiles(std::uint64_t seed, FileTexts files) : dice_(seed), files_(std::move(files)) {}

    FileTexts const& files() const { return files_; }

  protected:
    using Lines = std::vector<std::string>;

    std::string anyFile(std::string_view folder = "") {
        std::vector<std::string> names;
        for (auto const& [name, text] : files_)
            if (name.starts_with(folder))
                names.push_back(name);
        return names.empty() ? std::string() : names[dice_.below(names.size())];
    }
    static std::string folderOf(std::string const& file) {
        return file.substr(0, file.find('/') + 1);
    }
    void changeLines(std::string const& file, std::function<void(Lines&)> const& change) {
        auto lines = logicalLines(files_[file]);
        change(lines);
        files_[file] = textOfLines(lines);
    }
    std::string anyLine(std::string_view folder) {
        auto const lines = logicalLines(files_[anyFile(folder)]);
        return lines.empty() ? "\n" : lines[dice_.below(lines.size())];
    }
    static std::ptrdiff_t offset(std::size_t index) { return static_cast<std::ptrdiff_t>(index); }
    void insertLine(Lines& lines, std::string line) {
        if (!line.ends_with('\n'))
            line += '\n';
        auto const at = dice_.below(lines.size() + 1);
        if (at > 0 && !lines[at - 1].ends_with('\n'))
            lines[at - 1] += '\n';
        lines.insert(lines.begin() + offset(at), std::move(line));
    }
    std::string takeLine(Lines& lines, std::size_t at) {
        auto line = lines[at];
        lines.erase(lines.begin() + offset(at));
        return line;
    }

    Dice dice_;
    FileTexts files_;
};

// Edits as accidents make them, in the words of RandomDatabase: most of them, but not all, leave
// what the parsers accept.
class RandomEdits : public EditedFiles {
  public:
    using EditedFiles::EditedFiles;

    void edit() {
        auto const file = anyFile();
        if (file.empty())
            return;
        switch (dice_.below(16)) {
        case 0:
            return editFile(file);
        case 1:
            return nameAgent(anyFile("profiles/"));
        case 2:
        case 3:
            return addWords(file);
        case 4:
        case 5:
        case 6:
            return changeLines(file, [this](Lines& lines) { retouch(lines); });
        default:
            return changeLines(file, [this, &file](Lines& lines) { editLines(file, lines); });
        }
    }

  private:
    void editFile(std::string const& file) {
        auto const text = files_.at(file);
        auto const name =
            folderOf(file) + dice_.oneOf({"A", "Added", "M1", "M3", "Shared2", "Shared", "Zz"});
        if (!dice_.oneIn(3))
            files_.erase(file);
        if (!dice_.oneIn(3))
            files_[name] = text;
    }
    void nameAgent(std::string const& file) {
        if (file.empty())
            return;
        auto const name = dice_.oneOf({"Led", "Fan-%a", "Fan-%new", "Fan-Tray-%b", "Fan-Tray-%b-%c",
                                       "Fan-Tray-%c-%b", "Port-%p$", "Port-%p", "Other"});
        changeLines(file, [&](Lines& lines) {
            for (auto& line : lines)
                if (line.starts_with("agentName:"))
                    line = fmt::format("agentName: {}\n", name);
        });
    }
    void addWords(std::string const& file) {
        auto const line =
            file.starts_with("preinit/")
                ? dice_.oneOf({"n/new,T", "n/a,U", "n/a,T", "CONFIG:n/new,T", "n/d,Fen::Dir",
                               "m/%z/new,T,createOnMount", "n/new,T,createOnStandby"})
                : dice_.oneOf({"n/a,T,r",
                               "n/a,T,rw",
                               "n/d,T,i",
                               "n/d/e,T,w",
                               "m/%one,T,S",
                               "m/%x,T,r",
                               "ag/%agentString,T,r",
                               "fa/%a,T,w",
                               "fb/%b/d,T,r",
                               "pp/%p/b,T,r",
                               "alias:%one=2",
                               "alias:%one=1",
                               "MountGroup: g",
                               "MountGroup: g, 7",
                               "MountGroup: new",
                               "Condition: a b",
                               "Condition: other",
                               "activeMount",
                               "matchActiveName",
                               "noDefaultMountGroup",
                               "rootFlags: r",
                               "rootFlags: rwS",
                               "connectionFlags: S",
                               "subAgent: S-2",
                               "Include: Shared",
                               "Include: Shared*",
                               "Include: ConfigMountProfile"});
        changeLines(file, [&](Lines& lines) { insertLine(lines, line); });
    }
    void editLines(std::string const& file, Lines& lines) {
        if (lines.empty())
            return;
        auto const at = dice_.below(lines.size());
        switch (dice_.below(6)) {
        case 0:
            takeLine(lines, at);
            break;
        case 1:
            insertLine(lines, lines[at]);
            break;
        case 2:
            insertLine(lines, takeLine(lines, at));
            break;
        case 3:
            insertLine(lines, anyLine(folderOf(file)));
            break;
        default:
            lines[at] = withAnotherField(lines[at]);
        }
    }
    void retouch(Lines& lines) {
        std::vector<std::size_t> others;
        for (std::size_t i = 0; i < lines.size(); ++i)
            if (retouched(lines[i]) != lines[i])
                others.push_back(i);
        if (!others.empty()) {
            auto& line = lines[others[dice_.below(others.size())]];
            line = retouched(line);
        }
    }
    // What is before or behind the main part of a line comes or goes: in preinit lines CONFIG: and
    // an attribute, in the first line of a group its priority.
    static std::string retouched(std::string const& line) {
        auto const text = line.substr(0, line.find_first_of("\r\n#"));
        auto const commas = std::count(text.begin(), text.end(), ',');
        if (text.starts_with("CONFIG:"))
            return text.substr(std::size("CONFIG:") - 1) + "\n";
        if (text.starts_with("MountGroup:"))
            return text.substr(0, text.find(',')) + (commas == 0 ? ", 7\n" : "\n");
        if (commas != 1 || text.find_first_of(":=%") != std::string::npos)
            return line;
        return text.size() % 4 == 1 ? fmt::format("{},createOnStandby\n", text)
                                    : fmt::format("CONFIG:{}\n", text);
    }
    // One field of "path,type,flags", or what stands behind the ":" or "=" of another line, is
    // another one.
    std::string withAnotherField(std::string const& line) {
        auto const comma = line.find(',');
        if (auto const mark = line.find_first_of("=:"); comma == std::string::npos) {
            if (mark == std::string::npos)
                return line;
            return line.substr(0, mark + 1) +
                   dice_.oneOf({"1\n", "2\n", "rw\n", "S\n", "g\n", "h, 9\n", "Shared\n"});
        }
        auto const second = line.find(',', comma + 1);
        auto const path = line.substr(0, comma);
        auto const type = line.substr(comma + 1, second - comma - 1);
        if (dice_.oneIn(3))
            return dice_.oneOf({"n/a", "n/d", "n/d/e", "m/1", "m/2", "conf/x"}) +
                   line.substr(comma);
        if (second == std::string::npos || dice_.oneIn(3))
            return fmt::format("{},{}{}", path, dice_.oneOf({"T", "U", "Fen::Dir"}),
                               second == std::string::npos ? "\n" : line.substr(second));
        return fmt::format("{},{},{}\n", path, type,
                           dice_.oneOf({"r", "w", "rw", "i", "", "createOnMount"}));
    }
};

} // namespace support
