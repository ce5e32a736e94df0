// The program's commands and options, read off its help texts.
#pragma once

#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "support/KeldaProgram.h"

namespace support {

struct HelpOption {
    std::string name;    // of a short and a long one, each on its own
    std::string type;    // what it takes; empty for a flag
    std::string command; // empty for the program itself
};

inline std::string sectionOf(std::string const& help, std::string const& heading) {
    auto const begin = help.find("\n" + heading + ":\n");
    if (begin == std::string::npos)
        return "";
    auto const text = begin + heading.size() + 3;
    return help.substr(text, help.find("\n\n", text) - text);
}

inline std::vector<std::string> helpCommands() {
    std::vector<std::string> commands;
    std::istringstream lines(sectionOf(KeldaProgram().run({"--help"}).out, "Commands"));
    for (std::string line; std::getline(lines, line);)
        if (line.starts_with("  ") && line[2] != ' ')
            commands.push_back(line.substr(2, line.find(' ', 2) - 2));
    return commands;
}

// The options of a command, or of the program itself when the command is "".
inline std::vector<HelpOption> helpOptions(std::string const& command) {
    auto const call = command.empty() ? Words{"--help"} : Words{command, "--help"};
    std::istringstream lines(sectionOf(KeldaProgram().run(call).out, "Options"));
    std::regex const heading("^  (-[^ ,]+)(?:,(-[^ ]+))?(?: ([^ ]+))?(?:  .*)?$");
    std::vector<HelpOption> options;
    std::smatch match;
    for (std::string line; std::getline(lines, line);)
        if (std::regex_match(line, match, heading))
            for (std::size_t const name : {1U, 2U})
                if (match[name].matched)
                    options.push_back({match[name], match[3], command});
    return options;
}

} // namespace support
