// A directory with real files that lives as long as the object.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>

namespace support {

class TemporaryDirectory {
  public:
    TemporaryDirectory() {
        auto pattern = (std::filesystem::temp_directory_path() / "kelda-test-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr)
            throw std::runtime_error("mkdtemp failed for " + pattern);
        path_ = pattern;
    }
    ~TemporaryDirectory() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TemporaryDirectory(TemporaryDirectory const&) = delete;
    TemporaryDirectory& operator=(TemporaryDirectory const&) = delete;

    std::filesystem::path const& path() const { return path_; }
    std::string string() const { return path_.string(); }
    std::filesystem::path operator/(std::string_view name) const { return path_ / name; }

    // Writes a file, byte for byte, below the directory (missing folders are made); returns its
    // full path.
    std::string write(std::string_view name, std::string_view text) const {
        auto const file = path_ / name;
        std::filesystem::create_directories(file.parent_path());
        std::ofstream stream(file, std::ios::binary | std::ios::trunc);
        stream.write(text.data(), static_cast<std::streamsize>(text.size()));
        stream.close();
        if (!stream)
            throw std::runtime_error("cannot write " + file.string());
        return file.string();
    }

    // Makes an empty folder below the directory; returns its full path.
    std::string makeDirectory(std::string_view name) const {
        std::filesystem::create_directories(path_ / name);
        return (path_ / name).string();
    }

  private:
    std::filesystem::path path_;
};

} // namespace support
