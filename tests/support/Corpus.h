// The corpora beside the source tree, which are read only if they are present.
#pragma once

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace support {

inline std::filesystem::path corpusDir(char const* name) {
    return std::filesystem::path(KELDA_CORPUS_DIR) / name;
}

inline bool corpusIsPresent() {
    return std::filesystem::is_directory(KELDA_CORPUS_DIR);
}

// The lines of a text file that are neither empty nor comments.
inline std::vector<std::string> significantLines(std::filesystem::path const& file) {
    std::vector<std::string> lines;
    std::ifstream stream(file);
    for (std::string line; std::getline(stream, line);)
        if (!line.empty() && line.front() != '#')
            lines.push_back(line);
    return lines;
}

// The fields of a line between its commas.
inline std::vector<std::string> fieldsOf(std::string const& line) {
    std::vector<std::string> fields;
    std::istringstream stream(line);
    for (std::string field; std::getline(stream, field, ',');)
        fields.push_back(field);
    return fields;
}

// Every agent string that the profiles of the corpus "openconfig" serve.
inline std::vector<std::string> openConfigAgents() {
    std::vector<std::string> agents;
    for (auto const& line : significantLines(corpusDir("openconfig") / "agents.txt")) {
        auto const fields = fieldsOf(line);
        agents.insert(agents.end(), fields.begin() + 2, fields.end());
    }
    return agents;
}

} // namespace support

// Ends a test that needs the corpora where they are not at hand.
#define SKIP_WITHOUT_CORPUS()                                                                      \
    if (!support::corpusIsPresent())                                                               \
    GTEST_SKIP() << "no directory " << KELDA_CORPUS_DIR << ": the corpora are not at hand"
