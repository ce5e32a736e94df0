#include "check/StdinOverlay.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <optional>
#include <stdexcept>
#include <system_error>
#include <utility>
#include <vector>

#include <fmt/format.h>
#include <sys/stat.h>

#include "Text.h"

namespace KeldaTool {
namespace {

namespace fs = std::filesystem;

void mustSucceed(std::error_code const& error, std::string const& what) {
    if (error)
        throw std::runtime_error(fmt::format("cannot {}: {}", what, error.message()));
}

// What tells whether two paths lead to the same file.
using Identity = std::pair<dev_t, ino_t>;

std::optional<Identity> identityOf(fs::path const& path) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0)
        return std::nullopt;
    return Identity{status.st_dev, status.st_ino};
}

// Everything in a folder, hidden files and folders included.
std::vector<fs::path> namesIn(fs::path const& folder, std::error_code& error) {
    std::vector<fs::path> names;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error))
        names.push_back(entry->path().filename());
    return names;
}

// By which names a folder has a file: its own, and those of links to it.
std::vector<fs::path> namesOf(fs::path const& file, fs::path const& folder) {
    std::vector<fs::path> names;
    auto const parent = identityOf(file.has_parent_path() ? file.parent_path() : ".");
    if (parent && parent == identityOf(folder))
        names.push_back(file.filename());
    auto const identity = identityOf(file);
    std::error_code unreadable;
    if (identity)
        for (auto const& name : namesIn(folder, unreadable))
            if (identityOf(folder / name) == identity)
                names.push_back(name);
    std::ranges::sort(names);
    names.erase(std::unique(names.begin(), names.end()), names.end());
    return names;
}

void mustNameAFile(fs::path const& file) {
    auto const name = file.filename();
    std::error_code ignored;
    if (name.empty() || name == "." || name == ".." || fs::is_directory(file, ignored))
        throw std::runtime_error(
            fmt::format("'{}' is not the name of a file", printable(file.string())));
}

void write(fs::path const& file, std::string_view text) {
    errno = 0;
    std::ofstream stream(file, std::ios::binary);
    stream.write(text.data(), static_cast<std::streamsize>(text.size()));
    stream.close();
    if (!stream)
        mustSucceed({errno == 0 ? EIO : errno, std::generic_category()},
                    "write " + printable(file.string()));
}

// Makes a folder with links to everything in another one, but for these names, which hold the text.
void mirror(fs::path const& folder, fs::path const& copy, std::vector<fs::path> const& names,
            std::string_view text) {
    std::error_code error;
    auto const entries = namesIn(folder, error);
    mustSucceed(error, "read folder " + printable(folder.string()));
    fs::create_directory(copy, error);
    mustSucceed(error, "make folder " + printable(copy.string()));
    auto const absolute = fs::absolute(folder);
    for (auto const& name : entries) {
        if (std::ranges::find(names, name) != names.end())
            continue;
        fs::create_symlink(absolute / name, copy / name, error);
        mustSucceed(error, "make link " + printable((copy / name).string()));
    }
    for (auto const& name : names)
        write(copy / name, text);
}

std::string replaceAll(std::string text, std::string const& sought, std::string const& by) {
    for (auto at = text.find(sought); at != std::string::npos;
         at = text.find(sought, at + by.size()))
        text.replace(at, sought.size(), by);
    return text;
}

} // namespace

TemporaryFolder::TemporaryFolder() {
    std::error_code error;
    auto pattern = (fs::temp_directory_path(error) / "kelda-XXXXXX").string();
    if (!error && mkdtemp(pattern.data()) == nullptr)
        error = {errno, std::generic_category()};
    mustSucceed(error, "make a temporary folder");
    path_ = pattern;
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
}

StdinOverlay::StdinOverlay(std::string const& preinitDir, std::string const& profileDir,
                           std::string const& file, std::string_view text) {
    mustNameAFile(file);
    preinit_ = overlaid(preinitDir, "preinit", file, text);
    profiles_ = overlaid(profileDir, "profiles", file, text);
    if (preinit_.loaded == preinit_.given && profiles_.loaded == profiles_.given)
        throw std::runtime_error(fmt::format("{} stands neither in {} nor in {}", printable(file),
                                             printable(preinitDir), printable(profileDir)));
}

StdinOverlay::Folder StdinOverlay::overlaid(std::string const& folder, char const* name,
                                            fs::path const& file, std::string_view text) {
    auto const names = namesOf(file, folder);
    if (names.empty())
        return {folder, folder};
    auto const copy = temporary_.path() / name;
    mirror(folder, copy, names, text);
    for (auto const& entry : names)
        files_.push_back((copy / entry).string());
    return {folder, copy.string()};
}

std::string StdinOverlay::original(std::string const& text) const {
    auto result = text;
    for (auto const* const folder : {&preinit_, &profiles_})
        if (folder->loaded != folder->given)
            result = replaceAll(std::move(result), folder->loaded, folder->given);
    return result;
}

} // namespace KeldaTool
