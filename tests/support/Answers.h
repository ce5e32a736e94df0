// Every answer of an agent-side parser as text, one answer a line. Parsers that know the same give
// the same lines, whatever order their hash maps have.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include <KeldaBase/AgentMountFileInfo.h>
#include <KeldaUtil/MountFlags.h>

namespace support {

template <class Strings>
std::vector<std::string> sortedStrings(Strings const& list) {
    std::vector<std::string> texts;
    for (auto const& text : list)
        texts.emplace_back(std::string_view(text));
    std::sort(texts.begin(), texts.end());
    return texts;
}

template <class Map>
std::vector<std::string> sortedKeys(Map const& map) {
    std::vector<std::string> keys;
    for (auto const& entry : map)
        keys.emplace_back(std::string_view(entry.first));
    std::sort(keys.begin(), keys.end());
    return keys;
}

// Asks every query about everything that the parser knows of.
class Answers {
  public:
    explicit Answers(Kelda::AgentMountFileInfo& parser) : parser_(parser) {
        addWhole();
        addAgents();
        addPreinits();
        addConfigPaths();
        addGroups();
        addFiles();
        addMounts();
    }

    std::vector<std::string> const& lines() const { return lines_; }

  private:
    static std::string yesNo(bool value) { return value ? "yes" : "no"; }
    static std::string text(Rook::String const& value) { return std::string(value.view()); }
    static std::string text(Fen::MountTable::Flags flags) {
        return text(KeldaUtil::mountTableFlagsToString(flags));
    }
    template <class Strings>
    static std::string list(Strings const& strings) {
        std::string joined;
        for (auto const& one : strings)
            joined += " <" + std::string(std::string_view(one)) + ">";
        return joined;
    }
    void add(std::string const& question, std::string const& answer) {
        lines_.push_back(question + " = " + answer);
    }

    void addWhole() {
        add("rootFlags", text(parser_.rootFlags()));
        add("connectionFlags", text(parser_.connectionFlags()));
        add("subAgents", list(parser_.subAgents()));
        add("activeMount", yesNo(parser_.activeMount()));
        add("noDefaultMountGroup", yesNo(parser_.noDefaultMountGroup()));
        add("foundMountProfile", yesNo(parser_.foundMountProfile()));
        add("defaultPreinitsLoaded", yesNo(parser_.defaultPreinitsLoaded()));
        add("extraProfileDir", text(parser_.extraProfileDir()));
    }
    void addAgents() {
        for (auto const& agent : parser_.getAgentStrings()) {
            add("foundMountProfile " + text(agent), yesNo(parser_.foundMountProfile(agent)));
            add("agentPaths " + text(agent), list(sortedStrings(parser_.agentPaths(agent))));
        }
        for (auto const& [agent, files] : parser_.agentStringProfileFileMap())
            filesOfAgents_.push_back("files of " + text(agent) + " = " + list(files));
        std::sort(filesOfAgents_.begin(), filesOfAgents_.end());
        lines_.insert(lines_.end(), filesOfAgents_.begin(), filesOfAgents_.end());
    }
    void addPreinits() {
        for (auto const& path : parser_.preinitPaths())
            add("getType " + text(path), text(parser_.getType(path)));
        for (auto const& path : sortedStrings(parser_.rawPreinitPaths()))
            add("getPreinitAttr " + path, text(parser_.getPreinitAttr(path)));
    }
    void addConfigPaths() {
        for (auto const& path : sortedKeys(parser_.pathConfigInfoMap())) {
            add("pathConfigInfoMapHas " + path, yesNo(parser_.pathConfigInfoMapHas(path)));
            add("pathIsConfig " + path, yesNo(parser_.pathIsConfig(path, false)) + "/" +
                                            yesNo(parser_.pathIsConfig(path, true)));
        }
    }
    void addGroups() {
        for (auto const& group : sortedStrings(parser_.mountGroups()))
            add("mountGroupPaths " + group, list(parser_.mountGroupPaths(group)));
    }
    void addFiles() {
        auto const files = sortedStrings(parser_.includedProfileFiles());
        for (auto const& file : files) {
            add("fileIsLoaded " + file, yesNo(parser_.fileIsLoaded(file)));
            add("profileFilePaths " + file, list(parser_.profileFilePaths(file, false)));
            add("with includes " + file, list(parser_.profileFilePaths(file, true)));
        }
        if (!files.empty())
            add("profileFilePaths *", list(parser_.profileFilePaths("*", true)));
    }
    void addMounts() {
        for (auto const& path : sortedKeys(parser_.pathMountArgsMap())) {
            auto const info = parser_.mountInfo(path);
            add("mountInfo " + path,
                text(info.type) + " " + text(info.flags) + " " + yesNo(info.isExplicit) + " " +
                    yesNo(parser_.isExplicit(path)) + " " + yesNo(parser_.infoExists(path)));
            auto const newFlags = Fen::MountTable::Flags(0x80003);
            add("infoCompatible " + path,
                yesNo(parser_.infoCompatible(path, info.type, newFlags, false, false, false)) +
                    "/" + yesNo(parser_.infoCompatible(path, "T", newFlags, true, true, true)));
            add("getIntermediateFlags " + path,
                text(parser_.getIntermediateFlags(newFlags, path)) + "/" +
                    text(parser_.getIntermediateFlags(newFlags, path + "/new")));
        }
    }

    Kelda::AgentMountFileInfo& parser_;
    std::vector<std::string> lines_;
    std::vector<std::string> filesOfAgents_;
};

inline std::vector<std::string> answersOf(Kelda::AgentMountFileInfo& parser) {
    return Answers(parser).lines();
}

// The first lines that differ, for a failure that can be read; empty when none do.
inline std::string firstDifference(std::vector<std::string> const& one,
                                   std::vector<std::string> const& other) {
    auto const [a, b] = std::mismatch(one.begin(), one.end(), other.begin(), other.end());
    if (a == one.end() && b == other.end())
        return "";
    return "<<< " + (a == one.end() ? "(end)" : *a) + "\n>>> " + (b == other.end() ? "(end)" : *b);
}

} // namespace support
