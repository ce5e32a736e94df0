// Edits of a large device, as people make them.
#pragma once

#include <algorithm>
#include <array>
#include <cctype>
#include <functional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include <strings.h>

#include <fmt/format.h>

#include "RandomEdits.h"

namespace support {

// Edits as people make them in a large device that loads: every line that comes is well-formed, and
// what it mounts is declared.
class CarefulEdits : public EditedFiles {
  public:
    using EditedFiles::EditedFiles;

    // Says what it did.
    std::string edit() {
        static constexpr std::array<std::string (CarefulEdits::*)(), 17> kinds{
            &CarefulEdits::addPath,         &CarefulEdits::removePath,
            &CarefulEdits::changeFlags,     &CarefulEdits::changeType,
            &CarefulEdits::changeAlias,     &CarefulEdits::addInclude,
            &CarefulEdits::removeInclude,   &CarefulEdits::changeRootFlags,
            &CarefulEdits::addSubAgent,     &CarefulEdits::changeGroup,
            &CarefulEdits::addProfile,      &CarefulEdits::removeProfile,
            &CarefulEdits::moveLine,        &CarefulEdits::addKeyword,
            &CarefulEdits::renameToken,     &CarefulEdits::renameAgent,
            &CarefulEdits::changeFlagsBelow};
        return (this->*kinds[dice_.below(kinds.size())])();
    }
    // The files that were edited, by name.
    std::set<std::string> const& touched() const { return touched_; }

  private:
    using IsWanted = std::function<bool(std::string const& line)>;

    static bool isPath(std::string const& line) {
        auto const text = line.substr(0, line.find('#'));
        return text.find('=') == std::string::npos && text.find(':') != text.find("Condition") &&
               std::count(text.begin(), text.end(), ',') == 2 && !isKeyword(line, "MountGroup:");
    }
    static bool isKeyword(std::string const& line, std::string_view keyword) {
        auto const at = line.find_first_not_of(" \t");
        return at != std::string::npos &&
               strncasecmp(line.c_str() + at, keyword.data(), keyword.size()) == 0;
    }
    static IsWanted keyword(std::string_view name) {
        return [name](std::string const& line) { return isKeyword(line, name); };
    }

    // A line that is wanted, in some file; the change of its text.
    std::string changeLine(std::string_view what, std::string_view folder, IsWanted const& isWanted,
                           std::function<std::string(std::string const&)> const& change) {
        for (int tries = 0; tries < 200; ++tries) {
            auto const file = anyFile(folder);
            auto lines = logicalLines(files_[file]);
            std::vector<std::size_t> wanted;
            for (std::size_t i = 0; i < lines.size(); ++i)
                if (isWanted(lines[i]))
                    wanted.push_back(i);
            if (wanted.empty())
                continue;
            auto& line = lines[wanted[dice_.below(wanted.size())]];
            auto const former = line;
            line = change(former);
            files_[file] = textOfLines(lines);
            touched_.insert(file);
            return fmt::format("{} in {}: {} -> {}", what, file, former, line);
        }
        return fmt::format("{}: no such line", what);
    }
    // A line behind one that is wanted.
    std::string addBehind(std::string_view what, std::string const& line,
                          IsWanted const& isWanted) {
        return changeLine(what, "profiles/", isWanted, [&line](std::string const& former) {
            return former + (former.ends_with('\n') ? "" : "\n") + line + "\n";
        });
    }
    // Some path line without aliases, with other flags.
    std::string anyMount() {
        for (;;) {
            auto const line = anyLine("profiles/");
            if (isPath(line) && line.find('%') == std::string::npos)
                return withFlags(line, anyFlags());
        }
    }
    std::string anyFlags() { return dice_.oneOf({"r", "w", "rw", "ri", "wc", "rwS", "rS", ""}); }
    static std::string withFlags(std::string const& line, std::string const& flags) {
        auto const comma = line.find(',', line.find(',') + 1);
        return fmt::format("{},{}\n", line.substr(0, comma), flags);
    }
    std::string word() { return fmt::format("word{}", dice_.below(1000)); }

    std::string addPath() { return addBehind("a path", anyMount(), isPath); }
    std::string removePath() {
        return changeLine("no path", "profiles/", isPath, [](auto const&) { return "# gone\n"; });
    }
    std::string changeFlags() {
        auto const flags = anyFlags();
        return changeLine("flags", "profiles/", isPath,
                          [&](std::string const& line) { return withFlags(line, flags); });
    }
    std::string changeFlagsBelow() {
        auto const flags = anyFlags();
        return changeLine("flags of a shared file", "profiles/Shared", isPath,
                          [&](std::string const& line) { return withFlags(line, flags); });
    }
    std::string changeType() {
        auto const isType = [](std::string const& line) {
            return line.find("::") != std::string::npos && line.front() != '#';
        };
        return changeLine("type", "preinit/", isType,
                          [](std::string line) { return line.insert(line.find("::"), "2"); });
    }
    std::string changeAlias() {
        auto const value = word();
        return changeLine("alias", "profiles/", keyword("alias:"), [&](std::string const& line) {
            return fmt::format("{}={}\n", line.substr(0, line.find('=')), value);
        });
    }
    std::string addInclude() {
        auto const file = anyFile("profiles/Shared").substr(std::size("profiles/") - 1);
        return addBehind("an include", "Include: " + file, [](std::string const& line) {
            return isKeyword(line, "alias:") || isKeyword(line, "MountGroup:") ||
                   isKeyword(line, "Include:");
        });
    }
    std::string removeInclude() {
        return changeLine("no include", "profiles/", keyword("Include:"),
                          [](auto const&) { return "# gone\n"; });
    }
    std::string changeRootFlags() {
        auto const line = "rootFlags: " + dice_.oneOf({"r", "w", "rw", "rS"});
        if (dice_.oneIn(2))
            return changeLine("root flags", "profiles/", keyword("rootFlags:"),
                              [&](auto const&) { return line + "\n"; });
        return addBehind("new root flags", line, keyword("agentName:"));
    }
    std::string addSubAgent() {
        return addBehind("a sub-agent", "subAgent: " + word(), keyword("agentName:"));
    }
    std::string changeGroup() {
        auto const line = fmt::format("MountGroup: {}", word());
        if (dice_.oneIn(2))
            return changeLine("group", "profiles/", keyword("MountGroup:"),
                              [&](auto const&) { return line + "\n"; });
        return addBehind("new group", line, isPathOfProfile());
    }
    // An included file may not open a group.
    IsWanted isPathOfProfile() {
        return [](std::string const& line) { return isKeyword(line, "alias:"); };
    }
    std::string addKeyword() {
        auto const line = dice_.oneOf(
            {"activeMount", "noDefaultMountGroup", "connectionFlags: SN", "connectionFlags: A"});
        return addBehind("a keyword", line, keyword("agentName:"));
    }
    std::string addProfile() {
        auto const from = anyFile("profiles/");
        auto const name = word();
        auto const file = "profiles/New" + name;
        changeLines(file, [&](Lines& lines) {
            lines = logicalLines(files_[from]);
            for (auto& line : lines)
                if (isKeyword(line, "agentName:"))
                    line.insert(line.find_first_not_of(" \t", line.find(':') + 1), name);
        });
        touched_.insert(file);
        return fmt::format("a profile {} like {}", file, from);
    }
    std::string removeProfile() {
        auto const file = anyFile("profiles/");
        if (files_[file].find("gentName") == std::string::npos)
            return "no profile: nothing";
        files_.erase(file);
        touched_.insert(file);
        return "no profile " + file;
    }
    std::string moveLine() {
        auto const file = anyFile("profiles/");
        auto lines = logicalLines(files_[file]);
        std::vector<std::size_t> paths;
        for (std::size_t i = 0; i < lines.size(); ++i)
            if (isPath(lines[i]))
                paths.push_back(i);
        if (paths.empty())
            return "moved line: nothing";
        auto const from = paths[dice_.below(paths.size())];
        auto const line = takeLine(lines, from);
        auto const to = std::min(paths[dice_.below(paths.size())], lines.size());
        if (to > 0 && !lines[to - 1].ends_with('\n'))
            lines[to - 1] += '\n';
        lines.insert(lines.begin() + offset(to), line.ends_with('\n') ? line : line + '\n');
        files_[file] = textOfLines(lines);
        touched_.insert(file);
        return fmt::format("moved line in {} from {} to {}: {}", file, from, to, line);
    }
    std::string renameToken() {
        auto const hasToken = [](std::string const& line) {
            return isKeyword(line, "agentName:") && line.find("-%") != std::string::npos;
        };
        std::string former;
        auto const name = word();
        auto const what = changeLine("token", "profiles/", hasToken, [&](std::string line) {
            auto const begin = line.find("-%") + 1;
            auto end = begin + 1;
            while (end < line.size() && (std::isalnum(line[end]) != 0 || line[end] == '_'))
                ++end;
            former = line.substr(begin, end - begin);
            return line.replace(begin, end - begin, "%" + name);
        });
        return what + " of " + former;
    }
    std::string renameAgent() {
        auto const name = word();
        return changeLine("agent", "profiles/", keyword("agentName:"), [&](std::string line) {
            return line.insert(line.find_first_not_of(" \t", line.find(':') + 1), name);
        });
    }

    std::set<std::string> touched_;
};

} // namespace support
