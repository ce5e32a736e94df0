// What bash offers to complete a line with.
#pragma once

#include <sstream>
#include <stdexcept>
#include <string>

#include "Shell.h"

namespace support {

// The offers for the last of the words behind "kelda". The script's function is called as bash
// calls it: with the words of the line, which bash splits at "=" and ":" too. Outside of a
// completion there is nothing for compopt to work on; what it is asked for stands among the offers.
inline Words offeredByBash(std::string const& completionScript, Words const& words,
                           std::string const& settings = "") {
    auto script =
        settings + completionScript + "compopt() { echo \"compopt $*\"; }\n" + "COMP_WORDS=(kelda";
    for (auto const& word : words)
        script += " " + shellQuoted(word);
    script += ")\nCOMP_CWORD=" + std::to_string(words.size()) +
              "\n_kelda\n[ ${#COMPREPLY[@]} -eq 0 ] || printf '%s\\n' \"${COMPREPLY[@]}\"\n";
    auto const outcome = runScript("bash --norc --noprofile", script);
    if (outcome.status != 0)
        throw std::runtime_error("bash failed: " + outcome.out);
    std::istringstream lines(outcome.out);
    Words offers;
    for (std::string line; std::getline(lines, line);)
        offers.push_back(line);
    return offers;
}

} // namespace support
