// The yardstick: a loader of preinit files and mount profiles as one writes it without a thought
// for speed, with std::getline, std::string and maps of strings. It knows nothing of the library.
#pragma once

#include <cstdint>
#include <fstream>
#include <map>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace bench {

// It does what a lenient parser does with valid files: joins continued lines, cuts comments,
// removes blanks, looks types up by wildcard path, expands aliases, merges flags and files each
// path under its group and its profile. Faults are noted and the line is passed over; what only a
// checker of files needs (line numbers, reserved names, conflicts of keywords) is left out.
class PlainLoader {
  public:
    struct Record {
        std::string type;
        std::uint32_t flags = 0;
        bool isExplicit = false;
    };
    struct ConfigInfo {
        bool isConfig = false;
        bool isExplicit = false;
    };
    using Strings = std::unordered_map<std::string, std::string>;
    using Lists = std::unordered_map<std::string, std::vector<std::string>>;

    // `aliases`: those that every file has, by lower-case name.
    PlainLoader(std::string preinitDir, std::string profileDir, Strings aliases);

    // Loads every profile. Tokens of agent names and %agentString stand for "*".
    void loadEverything();
    // Loads what belongs to one agent.
    void loadAgent(std::string const& agentString);

    std::map<std::string, Record> const& records() const { return records_; }
    Strings const& types() const { return types_; }
    Lists const& groups() const { return groups_; } // by agent name, "::" and group name
    Lists const& files() const { return files_; }   // sorted
    std::vector<std::string> const& faults() const { return faults_; }

  private:
    enum class Attribute { none, createOnMount, createOnStandby };

    void loadPreinits();
    void loadPreinitFile(std::string const& file);
    void preinitLine(std::string line);
    void typeParents(std::string path);

    void loadDefaultGroups(std::string const& agent);
    void loadDefaultGroup(std::string const& name, std::string const& agent);
    bool readAgentName(std::ifstream& file, std::string& name);
    bool bindTokens(std::string const& name, std::string const& agentString);
    void loadProfile(std::ifstream& file, std::string const& name);
    void profileLine(std::string const& line, std::string const& file);
    void pathLine(std::string const& line, std::string const& file);
    void include(std::string const& pattern, std::string const& file);
    std::vector<std::string> namesMatching(std::string const& pattern);
    void record(std::string const& path, std::string const& type, std::string const& flags);
    void finishLoading();

    std::string expandAliases(std::string const& text);
    std::string evaluate(std::string const& expression);
    std::string valueOf(std::string const& operand);

    std::string const preinitDir_;
    std::string const profileDir_;
    Strings const aliases_;
    std::vector<std::string> profileNames_; // sorted

    Strings types_;
    std::unordered_map<std::string, Attribute> attributes_;
    std::unordered_map<std::string, ConfigInfo> configPaths_;
    std::map<std::string, Record> records_;
    Lists groups_;
    Lists files_;
    Lists includes_;
    Lists profilesOfAgent_;
    std::vector<std::string> subAgents_;
    std::string rootFlags_;
    std::string connectionFlags_;
    bool noDefaultGroup_ = false;
    bool activeMount_ = false;
    bool matchActiveName_ = false;
    std::vector<std::string> faults_;

    Strings fileAliases_;
    std::string agentName_;
    std::string group_;
    bool inInclude_ = false;
};

} // namespace bench
