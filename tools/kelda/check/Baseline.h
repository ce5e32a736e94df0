// Known findings, kept in a file: a check leaves them out and tells of new ones only.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "check/CheckResult.h"

namespace KeldaTool {

class Baseline {
  public:
    struct Entry {
        std::string file; ///< from the baseline's folder on, or absolute; "" for no file
        std::string rule;
        std::string message;
        std::int32_t line = 0; ///< only says which finding is meant where several are alike
    };
    /// Whether a check would have found what an entry holds, if it is still there. `path` is that
    /// of the entry's file, absolute; "" for no file.
    using IsChecked = std::function<bool(Entry const& entry, std::string const& path)>;

    /// Reads a baseline. Throws std::runtime_error, which says what is wrong with the file.
    static Baseline read(std::string const& path);

    /// Leaves out the findings that stand in the baseline, as often as they stand there, and counts
    /// them in inBaseline. A finding is recognised by its file, rule and message, in whatever line
    /// it stands now. The entries that no finding fits come to staleBaseline, unless they were not
    /// checked.
    void apply(
        CheckResult& result,
        IsChecked const& isChecked = [](Entry const&, std::string const&) { return true; }) const;

    std::vector<Entry> const& entries() const { return entries_; }

  private:
    std::string path_;
    std::vector<Entry> entries_;
};

/// The text of a baseline with all findings of a result, to be written to `path`. Files are named
/// from its folder on, so that it holds wherever the program is called from.
std::string baselineText(CheckResult const& result, std::string const& path);

} // namespace KeldaTool
