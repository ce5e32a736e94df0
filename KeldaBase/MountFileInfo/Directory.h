// The file system as a directory scan sees it: every descriptor and list is released by its owner.
#pragma once

#include <cstdio>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <dirent.h>
#include <glob.h>

namespace Kelda {

struct CloseFile {
    void operator()(FILE* file) const noexcept { std::fclose(file); }
};
using OpenFile = std::unique_ptr<FILE, CloseFile>;

struct CloseDirectory {
    void operator()(DIR* directory) const noexcept { closedir(directory); }
};
using OpenDirectory = std::unique_ptr<DIR, CloseDirectory>;

// An open file descriptor, -1 for none.
class Descriptor {
  public:
    explicit Descriptor(int descriptor) noexcept : descriptor_(descriptor) {}
    Descriptor(Descriptor&& other) noexcept : descriptor_(other.release()) {}
    Descriptor& operator=(Descriptor&&) = delete;
    ~Descriptor();

    bool isOpen() const noexcept { return descriptor_ >= 0; }
    int get() const noexcept { return descriptor_; }
    int release() noexcept;

  private:
    int descriptor_;
};

// Opens a file for reading, relative to the directory `base` (AT_FDCWD for the working directory),
// without ever waiting for a peer. Closed on exec. Nothing is open when the file is neither regular
// nor a folder.
Descriptor openForReading(int base, char const* name);

// Makes a stream of a descriptor; null, with the descriptor closed, when that fails.
OpenFile streamOf(Descriptor descriptor);

// The files of a directory whose names match a pattern, in the order of their names.
class DirectoryMatches {
  public:
    // `directory` stands for itself, whatever characters it holds; `pattern` is a file name
    // pattern.
    DirectoryMatches(std::string_view directory, std::string_view pattern);
    ~DirectoryMatches();
    DirectoryMatches(DirectoryMatches const&) = delete;
    DirectoryMatches& operator=(DirectoryMatches const&) = delete;

    // 0, GLOB_NOMATCH, or another code of glob when the search failed.
    int code() const noexcept { return code_; }
    // The names, without their folder; they live as long as the object.
    std::vector<char const*> names() const;

  private:
    glob_t matches_{};
    int code_;
};

// The names of a directory that is being scanned as a whole. Include lines of the files found there
// search this list, so that a pattern does not cost another walk through the directory.
class DirectoryListing {
  public:
    DirectoryListing(std::string_view directory, std::vector<char const*> names)
        : directory_(directory), names_(std::move(names)) {}

    // Whether the list holds all that a search of `directory` for `pattern` can find: not for names
    // that a scan of the whole leaves out, nor for a plain name, for which looking is cheaper.
    bool answers(std::string_view directory, std::string_view pattern) const;
    // The names that match, in the order of the list.
    std::vector<char const*> matching(std::string const& pattern);

  private:
    void sortNames();

    std::string directory_;
    std::vector<char const*> names_;
    std::vector<std::size_t> byName_; // positions in names_, in byte order of the names
};

} // namespace Kelda
