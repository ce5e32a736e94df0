#include "GeneratedDevice.h"

#include <array>
#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <string_view>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "DeviceNames.h"
#include "DevicePlan.h"

namespace bench {

namespace {

constexpr std::array<std::string_view, 16> ownFlags = {
    "w", "w", "r", "wi", "rw", "wS", "wK", "rO", "wf", "r", "wL", "w", "wr", "wA", "rif", "wD"};
constexpr std::array<std::string_view, 8> listFlags = {"wc",  "wcd",  "rwc", "wci",
                                                       "wcO", "rwcd", "wc",  "wcf"};
constexpr std::array<std::string_view, 12> readFlags = {"r",  "r",  "r",  "ri", "rO",  "rS",
                                                        "rf", "rL", "rK", "rN", "rif", "rE"};

constexpr std::size_t nobody = static_cast<std::size_t>(-1);

// How one file is laid out.
struct Style {
    std::string_view comma;
    std::string_view indent;
    bool continued; // long lines go on in the next
};

constexpr std::array<Style, 8> styles = {{{",", "", false},
                                          {", ", "", false},
                                          {",", "", true},
                                          {", ", "", false},
                                          {",", "\t", false},
                                          {" ,\t", "", false},
                                          {", ", "  ", true},
                                          {",", "", false}}};

void writeFile(std::filesystem::path const& file, std::string const& text) {
    std::ofstream stream(file, std::ios::binary);
    stream.write(text.data(), static_cast<std::streamsize>(text.size()));
    stream.close();
    if (!stream)
        throw std::runtime_error("cannot write " + file.string());
}

bool holdsOtherToken(std::string_view path) {
    constexpr std::string_view cell = "%cellPath";
    return path.find('%', path.starts_with(cell) ? cell.size() : 0) != std::string_view::npos;
}

class Writer {
  public:
    Writer(DeviceShape const& shape, std::filesystem::path preinit, std::filesystem::path profiles)
        : seed_(shape.seed), wanted_(shape.linesPerProfile), names_(seed_), plan_(shape),
          preinit_(std::move(preinit)), profiles_(std::move(profiles)),
          toCollect_(shape.collectedPaths) {
        figures_.profiles = plan_.profiles().size();
        figures_.pathLines = shape.lines;
    }

    void writeAll() {
        writeDefaultGroups();
        writeReaders("ActiveSupervisor", supervisorLines, "activeMount\n\n");
        for (std::size_t family = 0; family < plan_.families(); ++family)
            writeFamilyFiles(family);
        for (std::size_t i = 0; i < plan_.profiles().size(); ++i)
            writeProfile(i);
        flushPreinit();
        writeCollector();
        figures_.sharedLines = plan_.sharedLines();
    }

    DeviceFigures const& figures() const { return figures_; }
    std::string const& sampleAgent() const { return sampleAgent_; }

  private:
    std::uint64_t roll(std::string_view purpose, std::size_t a, std::size_t b = 0) const {
        return dice(seed_, purpose, a, b);
    }
    bool chance(std::string_view purpose, std::size_t a, unsigned percent) const {
        return roll(purpose, a) % 100 < percent;
    }
    AgentNames agent(std::size_t number) const {
        return names_.agent(number, plan_.profiles()[number].publicPaths);
    }
    static std::string header(std::string const& title) {
        return "# " + title + ".\n# Generated for measuring.\n\n";
    }

    void addLine(std::string& text, Style const& style, PathNames const& names,
                 std::string_view flags) {
        text.append(style.indent).append(names.path);
        bool const split = style.continued && names.path.size() + names.type.size() > 90;
        text.append(style.comma).append(split ? "\\\n      " : "").append(names.type);
        text.append(style.comma).append(flags);
        auto const line = ++lineNumber_;
        text += roll("trailing comment", line) % 30 == 0 ? "    # as agreed\n" : "\n";
    }

    std::string_view flagsOf(PathNames const& names) {
        auto const number = roll("flags", lineNumber_);
        return holdsOtherToken(names.path) && names.type == "Fen::Dir"
                   ? listFlags[number % listFlags.size()]
                   : ownFlags[number % ownFlags.size()];
    }

    void addReadLine(std::string& text, Style const& style, PublicPath const& read) {
        addReadLine(text, style, names_.path(agent(read.agent), read.path));
    }

    void addReadLine(std::string& text, Style const& style, PathNames const& names) {
        auto const flags = readFlags[roll("read flags", lineNumber_) % readFlags.size()];
        addLine(text, style, names, flags);
    }

    // A file of lines that read, for includes only.
    void writeReaders(std::string const& name, std::size_t lines,
                      std::string const& keywords = "") {
        auto text = header("Shared path lines, for Include only") + keywords;
        auto const& style = styles[roll("style", lineNumber_) % styles.size()];
        for (auto const& read : plan_.dealPaths(lines, nobody))
            addReadLine(text, style, read);
        writeFile(profiles_ / name, text);
        ++figures_.includeFiles;
    }

    static std::string familyFile(std::size_t family) {
        return fmt::format("Shared{}Readers", family);
    }
    static std::string patternFiles(std::size_t family) { return fmt::format("Common{}.", family); }

    void writeFamilyFiles(std::size_t family) {
        writeReaders(familyFile(family), familyFileLines);
        if (!DevicePlan::hasPatternFiles(family))
            return;
        writeReaders(patternFiles(family) + "base", patternFileLines);
        writeReaders(patternFiles(family) + "sensors", patternFileLines);
    }

    void writeDefaultGroups() {
        constexpr std::array<std::string_view, defaultGroupLines> common = {
            "system/about/config",   "system/about/state",      "system/clock/state",
            "system/logging/config", "%cellPath/system/memory", "%cellPath/system/processes"};
        constexpr std::array<std::string_view, perAgentGroupLines> own = {
            "%cellPath/system/processes/process/%agentString",
            "%cellPath/system/processes/process/%agentString/state"};
        auto text = header("Mounted by every agent");
        for (auto const path : common)
            addDefaultLine(text, path, "r");
        writeFile(profiles_ / "DefaultMountGroup", text);
        text = header("Mounted by every agent, for itself");
        for (auto const path : own)
            addDefaultLine(text, path, "wc");
        writeFile(profiles_ / "DefaultMountGroupPerAgent", text);
        figures_.linesRead += common.size() + own.size();
    }

    void addDefaultLine(std::string& text, std::string_view path, std::string_view flags) {
        PathNames const names{std::string(path), "Fen::Dir"};
        addLine(text, styles[0], names, flags);
        declare(names);
    }

    void writeProfile(std::size_t number) {
        auto const& plan = plan_.profiles()[number];
        auto const names = agent(number);
        auto const& style = styles[roll("style of", number) % styles.size()];
        auto text = header("Mounts of agent " + names.profile);
        text += (chance("keyword case", number, 5) ? "agentname : " : "agentName: ") +
                names.agentName() + "\n";
        addKeywords(text, names);
        addAliases(text, names);
        addIncludes(text, number);
        text += '\n';
        for (std::size_t path = 0; path < plan.ownLines; ++path) {
            addGroup(text, names, path);
            auto const line = names_.path(names, path);
            addLine(text, style, line, flagsOf(line));
            collect(style, line);
        }
        for (auto const& read : plan_.dealPaths(plan.readLines, number)) {
            addGroup(text, names, lineNumber_);
            addReadLine(text, style, read);
        }
        writeFile(profiles_ / names.profile, text);
        figures_.linesRead += plan.ownLines + plan.readLines;
        declarePaths(names, plan.ownLines);
        offerAsSample(names, plan.ownLines + plan.readLines);
    }

    void collect(Style const& style, PathNames const& names) {
        if (toCollect_ == 0)
            return;
        --toCollect_;
        addReadLine(collectorText_, style, names);
    }

    // The collector has no tokens; the other agents' are aliases in its profile.
    void writeCollector() {
        if (toCollect_ != 0)
            throw std::runtime_error("a generated device of this shape has too few own paths");
        if (collectorText_.empty())
            return;
        auto const name = GeneratedDevice::collector();
        auto text = header("Mounts of agent " + name) + "agentName: " + name + "\n";
        for (auto const token : DeviceNames::allTokens())
            text += fmt::format("alias: {} = all\n", token);
        writeFile(profiles_ / name, text + "\n" + collectorText_);
    }

    void addKeywords(std::string& text, AgentNames const& names) const {
        auto const number = names.number;
        if (chance("subAgent", number, 6))
            text += "subAgent: " + agent(number / 2).profile + "\n";
        if (chance("rootFlags", number, 5))
            text += "rootFlags: rw\n";
        if (chance("connectionFlags", number, 4))
            text += "connectionFlags: NA\n";
        if (chance("noDefaultMountGroup", number, 4))
            text += "noDefaultMountGroup\n";
        if (chance("condition", number, 10) && !isActive(number))
            text += "Condition: " + names.module + " is configured\n";
    }

    void addAliases(std::string& text, AgentNames const& names) const {
        for (std::size_t i = 0; i < names.aliases.size(); ++i) {
            auto const& alias = names.aliases[i];
            if (roll("choice", names.number, i) % 8 == 0) {
                auto const test = fmt::format("%is{}", alias.substr(1));
                text += "alias: " + test + " = %sysname~lab\n";
                text += "alias: " + alias + " = " + test + "?special:regular\n";
            } else {
                text += "alias: " + alias + " = " + names_.aliasValue(names, i) + "\n";
            }
        }
    }

    bool isActive(std::size_t number) const { return chance("active", number, 3); }

    void addIncludes(std::string& text, std::size_t number) {
        auto const family = number / familySize;
        if (chance("include", number, 40))
            addInclude(text, familyFile(family), familyFileLines);
        if (number % familySize == familySize / 2 && DevicePlan::hasPatternFiles(family))
            addInclude(text, patternFiles(family) + "*", 2 * patternFileLines);
        if (isActive(number))
            addInclude(text, "ActiveSupervisor", supervisorLines);
    }

    void addInclude(std::string& text, std::string const& pattern, std::size_t lines) {
        text += "Include: " + pattern + "\n";
        figures_.linesRead += lines;
    }

    // Opens a group before one line in twenty.
    void addGroup(std::string& text, AgentNames const& names, std::size_t line) const {
        auto const number = roll("group", names.number, line);
        if (number % 20 != 0)
            return;
        text += fmt::format("\nMountGroup: {}Group{}", names.module, (number >> 8) % 10);
        if ((number >> 16) % 3 != 0)
            text += fmt::format(",{}", (number >> 24) % 99 + 1);
        text += '\n';
    }

    // Declares the paths of an agent and some more, which nobody mounts.
    void declarePaths(AgentNames const& names, std::size_t paths) {
        for (std::size_t path = 0; path < paths + paths * 2 / 5; ++path)
            declare(names_.path(names, path));
        if (names.number % 2 == 1)
            flushPreinit();
    }

    void declare(PathNames const& names) {
        auto const number = roll("declaration", figures_.declarations++);
        bool const hasToken = names.path.find('%') != std::string::npos;
        bool const isConfig = !hasToken && names.path.ends_with("/config") && number % 2 == 0;
        preinitText_ += isConfig ? "CONFIG:" : "";
        preinitText_ += names.path + (figures_.declarations % 3 == 0 ? ", " : ",") + names.type;
        if (holdsOtherToken(names.path))
            preinitText_ += ",createOnMount";
        else if (!isConfig && number % 50 == 1)
            preinitText_ += ", createOnStandby";
        preinitText_ += '\n';
    }

    void flushPreinit() {
        if (preinitText_.empty())
            return;
        auto const name = fmt::format("Paths{}", preinitFiles_++);
        writeFile(preinit_ / name, header("Paths of two agents") + preinitText_);
        preinitText_.clear();
    }

    // The first agent with one token whose profile is nearest to the average size.
    void offerAsSample(AgentNames const& names, std::size_t lines) {
        if (names.tokens.size() != 1 || names.consuming || isActive(names.number))
            return;
        auto const distance = lines > wanted_ ? lines - wanted_ : wanted_ - lines;
        if (sampleAgent_.empty() || distance < sampleDistance_) {
            sampleAgent_ = names.profile + "-3";
            sampleDistance_ = distance;
        }
    }

    std::uint64_t const seed_;
    std::size_t const wanted_;
    DeviceNames const names_;
    DevicePlan plan_;
    std::filesystem::path const preinit_;
    std::filesystem::path const profiles_;
    DeviceFigures figures_;
    std::size_t lineNumber_ = 0;
    std::string preinitText_;
    std::size_t preinitFiles_ = 0;
    std::string sampleAgent_;
    std::size_t sampleDistance_ = 0;
    std::size_t toCollect_;
    std::string collectorText_;
};

std::filesystem::path makeTemporaryDirectory() {
    auto pattern = (std::filesystem::temp_directory_path() / "kelda-bench-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr)
        throw std::runtime_error("mkdtemp failed for " + pattern);
    return pattern;
}

void removeAll(std::filesystem::path const& directory) {
    std::error_code ignored;
    std::filesystem::remove_all(directory, ignored);
}

} // namespace

GeneratedDevice::GeneratedDevice(DeviceShape const& shape) : shape_(shape) {
    directory_ = makeTemporaryDirectory();
    try {
        std::filesystem::create_directory(preinitDir());
        std::filesystem::create_directory(profileDir());
        Writer writer(shape_, preinitDir(), profileDir());
        writer.writeAll();
        figures_ = writer.figures();
        agentString_ = writer.sampleAgent();
    } catch (...) {
        removeAll(directory_);
        throw;
    }
}

GeneratedDevice::~GeneratedDevice() {
    removeAll(directory_);
}

} // namespace bench
