// Which files are to be laid out, of which family they are, and what becomes of each.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "database/Device.h"
#include "formatting/Layout.h"

namespace KeldaTool {

/// The family of a text, told by its lines: one keyword of profiles makes a profile, otherwise most
/// path lines decide.
KeldaDatabase::FileFamily familyOf(std::string_view text);

/// A folder whose files are all of one family.
struct FamilyFolder {
    std::string path;
    KeldaDatabase::FileFamily family;
};

/// The family of the files in this folder: that of the known folder that it is, or what its name
/// tells; nothing where neither does.
std::optional<KeldaDatabase::FileFamily> familyOfFolder(std::string const& folder,
                                                        std::vector<FamilyFolder> const& known);

/// The files of a folder that the parser reads, by name. Throws std::runtime_error, with one
/// printable line, if the folder cannot be read.
std::vector<std::string> filesOfFolder(std::string const& folder);

/// What a file holds. Throws std::runtime_error, with one printable line; also for what is no
/// regular file.
std::string textOfFile(std::string const& path);

using LayOut = std::function<Formatted(std::string_view, KeldaDatabase::FileFamily)>;

/// The layout of a text; with the difference where the text would not mean the same any more.
struct ProvenLayout {
    Formatted layout;
    std::optional<std::string> difference; ///< one line of any bytes
};
ProvenLayout provenLayout(std::string_view text, KeldaDatabase::FileFamily family,
                          LayOut const& layOut = formatted);

} // namespace KeldaTool
