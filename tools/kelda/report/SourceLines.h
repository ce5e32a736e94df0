// The lines of a device's files as an editor counts them.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "database/Device.h"
#include "database/paths/WrittenLine.h"

namespace KeldaTool {

class SourceLines {
  public:
    explicit SourceLines(KeldaDatabase::Device const& device)
        : device_(device), reader_(device), texts_(device.files.size()) {}

    /// The number of the line that a known place is in.
    std::int32_t numberOf(KeldaDatabase::Place const& place) {
        return textOf(place.file).editorLine(place.line);
    }
    /// That line, with those that continue it and without its comment.
    std::string textOf(KeldaDatabase::Place const& place) {
        auto const& text = textOf(place.file);
        return KeldaDatabase::logicalLine(text, text.editorLine(place.line)).text;
    }

  private:
    KeldaDatabase::SourceText const& textOf(KeldaDatabase::FileId file) {
        auto& text = texts_[file];
        if (text == nullptr)
            text = &reader_.textOf(device_.files[file].path());
        return *text;
    }

    KeldaDatabase::Device const& device_;
    KeldaDatabase::PlaceReader reader_;
    std::vector<KeldaDatabase::SourceText const*> texts_; // by file
};

} // namespace KeldaTool
