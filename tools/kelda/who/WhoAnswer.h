// Which agents mount a path, asked of all files of a device.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "database/Device.h"

namespace KeldaTool {

struct WhoQuestion {
    std::string path;  ///< a path or a pattern, as PathPattern has them
    std::string flags; ///< letters that a mount must all have
    std::string type;  ///< of a mount, with "*" for any text; empty for all
};

/// One path of one agent.
struct WhoRow {
    std::uint32_t agent = 0; ///< index to Device::agents
    Rook::String path;
    Rook::String type;
    Fen::MountTable::Flags flags;   ///< of all lines
    std::vector<std::size_t> lines; ///< indexes to Device::mounts, in the order read

    /// The line to show: the first one or, where flags are asked for, the first one that has any of
    /// them.
    std::size_t decisiveLine = 0;
};

struct WhoAnswer {
    std::vector<WhoRow> rows; ///< by path and agent
    std::size_t leftOut = 0;  ///< mounts of such paths without the flags or the type
};

/// Whether a text consists of letters of mount flags.
bool areFlagLetters(std::string const& letters);

/// Asks about all agents but the "-Active-" variants, whose mounts their agents have as well.
WhoAnswer askWho(KeldaDatabase::Device const& device, WhoQuestion const& question);

/// The answer as a table for people, and as a document. `name`, where the device is one of several,
/// is its member "device".
std::string whoTable(KeldaDatabase::Device const& device, WhoAnswer const& answer, bool colour);
std::string whoDocument(KeldaDatabase::Device const& device, WhoQuestion const& question,
                        WhoAnswer const& answer, std::optional<std::string> const& name = {});

/// A document in one line, with a newline at its end.
std::string inOneLine(std::string const& document);

/// "'sys/clock' with the flag 'w'", "a path that matches 'sys/*'"; the conditions with `isFull`.
std::string askedFor(WhoQuestion const& question, bool isFull = true);

/// What people are told where there are no rows: what may have been meant, or why there are none.
std::string nobodyText(KeldaDatabase::Device const& device, WhoQuestion const& question,
                       WhoAnswer const& answer);

} // namespace KeldaTool
