// What kelda check has to print, whatever the format: findings with the places that a reader opens.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "database/Device.h"
#include "database/findings/Finding.h"

namespace KeldaTool {

/// A place as an editor has it.
struct SourcePlace {
    std::string file;        ///< a path that opens from where the program was called; "" for none
    std::int32_t line = 0;   ///< as an editor counts, from 1; 0 for none
    std::int32_t column = 0; ///< in characters, from 1; 0 for none
    std::int32_t width = 0;  ///< how many characters it takes from there
    std::string text;        ///< the line, any bytes
};

/// An Include line that led to a file.
struct IncludedFrom {
    std::string file;
    std::int32_t line = 0;
};

struct RelatedPlace {
    SourcePlace place;
    std::string text;
};

struct CheckedFinding {
    KeldaDatabase::Rule const* rule = nullptr;
    KeldaDatabase::Severity severity = KeldaDatabase::Severity::error;
    SourcePlace place;
    std::string message;                    ///< any bytes, may span lines
    std::string hint;                       ///< empty for none
    std::vector<IncludedFrom> includedFrom; ///< each an Include line by which the finding was met
    std::vector<RelatedPlace> related;
    std::vector<std::string> agents; ///< empty: no agent in particular
    std::int32_t reportedLine = 0;   ///< the line as the parser counts
};

struct CheckResult {
    std::size_t preinitFiles = 0;
    std::size_t profiles = 0;
    std::vector<CheckedFinding> findings;   ///< in the order found
    std::size_t suppressed = 0;             ///< findings that comments allow
    std::size_t inBaseline = 0;             ///< findings left out because the baseline has them
    std::vector<std::string> staleBaseline; ///< entries that no finding fits, one line of text each
    std::vector<std::string> filesRead;
    struct Skipped {
        std::string file;
        std::string reason;
    };
    std::vector<Skipped> filesSkipped;

    std::size_t count(KeldaDatabase::Severity severity) const;
};

/// How many findings of each severity there are, the gravest first.
using SeverityCounts = std::array<std::pair<KeldaDatabase::Severity, std::size_t>, 3>;
SeverityCounts severityCounts(CheckResult const& result);

} // namespace KeldaTool
