// From findings to what is printed of them: the paths that a reader opens, the lines and columns of
// an editor.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "check/CheckResult.h"
#include "database/findings/SourceText.h"

namespace KeldaTool {

/// What a path of a file that was read is where it is told; also for texts with such paths.
using NameOfFile = std::function<std::string(std::string const& path)>;

class CheckResolution {
  public:
    CheckResolution(KeldaDatabase::Device const& device, NameOfFile nameOfFile)
        : device_(device), nameOfFile_(std::move(nameOfFile)) {}

    CheckedFinding resolved(KeldaDatabase::Finding const& finding);

    /// The counts and lists of files.
    CheckResult emptyResult() const;

  private:
    std::string shownPath(std::string const& path) const;
    SourcePlace placeOf(KeldaDatabase::Place const& place, KeldaDatabase::Subject const& subject);
    IncludedFrom includedFrom(KeldaDatabase::IncludeId include);

    KeldaDatabase::Device const& device_;
    NameOfFile nameOfFile_;
    KeldaDatabase::SourceTexts texts_;
};

} // namespace KeldaTool
