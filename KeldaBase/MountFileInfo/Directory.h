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

// The files whose names match a pattern, in the order of their names.
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
    std::size_t size() const noexcept { return code_ == 0 ? matches_.gl_pathc : 0; }
    // The name of a match, without its folder.
    char const* name(std::size_t index) const noexcept;

  private:
    glob_t matches_{};
    int code_;
};

} // namespace Kelda
