// A JSON Schema by which tests judge documents.
#pragma once

#include <memory>
#include <string>
#include <vector>

namespace support {

class JsonSchema {
  public:
    /// Reads a schema from a file of the source tree. With `definition` it is that one of the
    /// schema's "definitions" which documents have to fit.
    explicit JsonSchema(std::string const& file, std::string const& definition = "");
    ~JsonSchema();
    JsonSchema(JsonSchema const&) = delete;
    JsonSchema& operator=(JsonSchema const&) = delete;

    /// What is wrong with a document, each with the place where it is; empty for a valid one. Text
    /// that is no JSON, or not UTF-8, is wrong, too.
    std::vector<std::string> violations(std::string const& document) const;

  private:
    struct Parsed;
    std::unique_ptr<Parsed> parsed_;
};

/// The text of a file of the source tree.
std::string sourceFile(std::string const& file);

} // namespace support
