// A lenient parser that scans directories with a loader of the test's own.
#pragma once

#include <array>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

#include "LenientParser.h"

namespace support {

inline std::string remainingText(FILE* file) {
    std::string content;
    std::array<char, 4096> chunk{};
    while (auto const count = std::fread(chunk.data(), 1, chunk.size(), file))
        content.append(chunk.data(), count);
    return content;
}

class Scanner : public LenientParser {
  public:
    using LenientParser::LenientParser;

    // What the loader does with a file; its result is the loader's.
    std::function<int(FILE*)> onFile = [](FILE*) { return 1; };

    int scan(std::string const& directory, char const* pattern = nullptr,
             Kelda::DynFileLoadCheck* check = nullptr) {
        return mapDir(directory, static_cast<FileLoader>(&Scanner::readFile), pattern, check);
    }

    // The names of the files that the loader was called for, in order.
    std::vector<std::string> const& filesRead() const { return filesRead_; }

  private:
    int readFile(FILE* file) {
        filesRead_.emplace_back(currentFileName().view());
        return onFile(file);
    }

    std::vector<std::string> filesRead_;
};

} // namespace support
