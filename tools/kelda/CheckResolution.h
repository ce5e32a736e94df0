// From findings to what is printed of them: the paths that a reader opens, the lines and columns of
// an editor.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "CheckResult.h"
#include "database/findings/SourceText.h"

namespace KeldaTool {

/// What a file that was read is called where it is told.
using NameOfFile = std::function<std::string(std::string const& path)>;

class CheckResolution {
  public:
    CheckResolution(KeldaDatabase::Device const& device, NameOfFile nameOfFile)
        : device_(device), nameOfFile_(std::move(nameOfFile)) {}

    CheckedFinding resolved(KeldaDatabase::Finding const& finding);

    /// The counts and lists of files.
    CheckResult emptyResult() const;

  private:
    SourcePlace placeOf(KeldaDatabase::Place const& place, KeldaDatabase::Subject const& subject);
    IncludedFrom includedFrom(KeldaDatabase::IncludeId include);

    KeldaDatabase::Device const& device_;
    NameOfFile nameOfFile_;
    KeldaDatabase::SourceTexts texts_;
};

} // namespace KeldaTool
