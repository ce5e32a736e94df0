// A device with one file replaced by a text: what an editor holds, and has not saved yet.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace KeldaTool {

/// A temporary folder of one's own; it goes with the object.
class TemporaryFolder {
  public:
    /// Throws std::runtime_error where none can be made.
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(TemporaryFolder const&) = delete;
    TemporaryFolder& operator=(TemporaryFolder const&) = delete;

    std::filesystem::path const& path() const { return path_; }

  private:
    std::filesystem::path path_;
};

/// As long as it lives there is a mirror of the folder that the file stands in.
class StdinOverlay {
  public:
    /// `file` need not exist, but must stand directly in one of the two folders, or be the file
    /// that a link there leads to. Throws std::runtime_error, which says what is wrong.
    StdinOverlay(std::string const& preinitDir, std::string const& profileDir,
                 std::string const& file, std::string_view text);

    // The folders to load: the given ones, or their mirrors.
    std::string const& preinitDir() const { return preinit_.loaded; }
    std::string const& profileDir() const { return profiles_.loaded; }

    /// The paths in the mirrors under which the text is found, one or more.
    std::vector<std::string> const& files() const { return files_; }

    /// A path, or a text with paths, with the given folders for their mirrors.
    std::string original(std::string const& text) const;

  private:
    struct Folder {
        std::string given;
        std::string loaded;
    };

    Folder overlaid(std::string const& folder, char const* name, std::filesystem::path const& file,
                    std::string_view text);

    TemporaryFolder temporary_;
    Folder preinit_;
    Folder profiles_;
    std::vector<std::string> files_;
};

} // namespace KeldaTool
